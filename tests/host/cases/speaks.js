var list = CreateObject("Scripting.Dictionary");
list.Add("a", 1);
Host.Echo("José", list.Count, Host.Argument("town"), [undefined, null].length);
