
Print("before");
throw new Error(5, "no é");
