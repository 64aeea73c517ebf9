expect("one and one", 1 + 1, 2;
finish();
