Dim page, other, word, dictionary
On Error Resume Next
Set page = CreateObject("vellum250.address")
If Err.Number <> 0 Then
  WScript.Echo Err.Number
  WScript.Quit
End If
On Error GoTo 0

' Optional arguments left out, and one that comes back changed.
WScript.Echo page.DisplayAddressName("1 High Street", , "Yorkshire")
word = "Jane Mary"
WScript.Echo page.GetFirstWord(word) & "|" & word

' A setting of the thread, shared by its objects; a failure in the page's own words.
page.Connection "Driver=Vellum250;Database=Z:\nowhere\at all.db;"
Set other = CreateObject("vellum250.address")
On Error Resume Next
WScript.Echo other.BuildAddress(1, 0)
WScript.Echo Err.Description
Err.Clear
page.TextID "no number"
WScript.Echo Err.Number & " " & Err.Description & " (" & Err.Source & ")"
On Error GoTo 0

Set dictionary = CreateObject("Scripting.Dictionary")
page.appDictShowText dictionary
page.appDictWebConfig dictionary
page.LastSql = dictionary.Count
WScript.Echo page.LastSql & " " & (page Is other) & " " & TypeName(page.LastSql)
