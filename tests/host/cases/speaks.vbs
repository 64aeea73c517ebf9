Echo "José ✓", 1, True, Null, Empty
Host.Print Argument("Town"), "[" & Argument("none") & "]"
Dim list
Set list = CreateObject("Scripting.Dictionary")
list.Add "a", 1
Print list.Count, Host.CreateObject("Scripting.Dictionary").Count
