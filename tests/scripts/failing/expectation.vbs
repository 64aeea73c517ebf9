Expect "one and one", 1 + 1, 3
Finish
