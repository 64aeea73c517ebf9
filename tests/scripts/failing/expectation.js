expect("a number", 1 + 1, "2");
finish();
