' Objects of one thread share the context, and nothing else.
Option Explicit
Dim first, second, again, page, d

Set first = NewPage
Set second = CreateObject("vellum250.ADDRESS")
Set again = first
Expect "itself", again Is first, True
Expect "another", second Is first, False
Expect "class", TypeName(first), TypeName(second)

' In a dictionary of the page and out again.
Set d = CreateObject("Scripting.Dictionary")
d.Add "page", first
Expect "kept", d("page") Is first, True
d("page").LastSql = "of the first"
Expect "own statement", first.LastSql & "|" & second.LastSql, "of the first|"

' What the first set holds for the second, made before or after.
Expect "connection", second.GetSalutationName("Dr", "Smith"), "Dr Smith"
second.TextID 2
second.Connection "Driver=Vellum250;Database=missing.db;"
On Error Resume Next
first.GetSalutationName "Dr"
Expect "of the other", Err.Number, &H80004005
Err.Clear
On Error GoTo 0
' A connection string with a call is remembered, an empty one not.
Expect "given", first.GetSalutationName("Dr", "Smith", , , , Argument("database")), "Dr Smith"
Expect "remembered", second.GetSalutationName("Dr", "Jones", , , , ""), "Dr Jones"
Expect "first line in text set 2", InStr(first.BuildAddress(0, 0), "Address:&nbsp;"), 0
first.TextID 1
ExpectPart "in text set 1", second.BuildAddress(0, 0), "Address:&nbsp;"

' Who sees the labels of texts, and whether calls leave a trace.
Set d = CreateObject("Scripting.Dictionary")
d.Add "globalShowLabel", "true"
d.Add "globalLabelsMyIPOnly", "true"
d.Add "globalLablesIPAddress", "10.0.0.1"
first.appDictWebConfig d
Expect "another's address", InStr(second.BuildAddress(0, 0), "(General/Address1)"), 0
first.RemoteHostIP " 10.0.0.1 "
ExpectPart "that address", second.BuildAddress(0, 0), "(General/Address1)"
second.appDictWebConfig CreateObject("Scripting.Dictionary")
second.SysDebug True
first.AddressDropDownList "11", 0
ExpectPart "trace", first.LastError, "0: " & vbCrLf & "Query:SELECT lookup_ref"
first.LastError = ""
second.OnErrorOnly True
first.AddressDropDownList "11", 0
Expect "no trace", first.LastError, ""
second.SysDebug False

' It outlives the objects.
d.RemoveAll
d.Add "page", first
Set first = Nothing
Set again = Nothing
d.RemoveAll
Set second = Nothing
Set page = CreateObject("vellum250.address")
Expect "later page", page.GetSalutationName("Dr", "Smith"), "Dr Smith"

' A value that a variable never had, numbers and dates in a text's place, texts in a number's.
Dim nothingYet
Expect "Empty text", page.GetInitials(nothingYet), ""
Expect "Empty is not left out", InStr(page.AddressDropDownList("11", , nothingYet), "id="""""), 28
Expect "number", page.GetFirstWord(12.5), "12.5"
Expect "date", page.GetInitials(#2/3/2001#), "0"
Expect "boolean", page.DisplayAddressName(True, "Leeds"), "True, Leeds"
page.TextID "1"
page.TextID 1.5
page.SysDebug "False"
page.SysDebug 0
Expect "text set 2", InStr(page.BuildAddress(0, 0), "Address:&nbsp;"), 0
Expect "beyond the code page", _
  Len(page.DisplayAddressName("Za" & Chr(128) & Chr(233) & "x", "Leeds")), Len("Za..x, Leeds")
Expect "as it came", page.DisplayAddressName("Caf" & Chr(233)), "Caf" & Chr(233)
Expect "upper case", page.DisplayAddressName("a", , "c" & Chr(244) & "te"), "a, C" & Chr(212) & "TE"

Finish
