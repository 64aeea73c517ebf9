Dim d
Set d = CreateObject("Scripting.Dictionary")
d.Add "itself", d
d.Add "page", NewPage
Expect "kept", d.Count, 2
Finish
