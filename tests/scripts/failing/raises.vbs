Expect "one and one", 1 + 1, 2
Err.Raise 5
Finish
