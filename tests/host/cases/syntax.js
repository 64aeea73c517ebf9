Print("never");

var = 1;
