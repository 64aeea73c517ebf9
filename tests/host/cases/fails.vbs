

Err.Raise 1234, "here", "no é"
Echo "never"
