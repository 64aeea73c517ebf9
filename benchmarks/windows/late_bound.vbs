' 100,000 late-bound calls of a trivial member of ours, and of Exists of a Scripting.Dictionary: the
' best of several rounds each, taken in turn. One line per member: name, milliseconds, ratio.
Option Explicit
Const Calls = 100000, Rounds = 9
Dim ours, theirs, best(3), names, i, round, start, answer
Set ours = CreateObject("vellum250.address")
Set theirs = CreateObject("Scripting.Dictionary")
theirs.Add "key", 1
names = Array("Dictionary.Exists", "LastSql, read", "TextID, one number", "LastSql, written")
ours.LastSql = "SELECT 1"

For round = 1 To Rounds
  start = Timer
  For i = 1 To Calls : answer = theirs.Exists("key") : Next
  Note 0
  start = Timer
  For i = 1 To Calls : answer = ours.LastSql : Next
  Note 1
  start = Timer
  For i = 1 To Calls : ours.TextID 5 : Next
  Note 2
  start = Timer
  For i = 1 To Calls : ours.LastSql = "key" : Next
  Note 3
  ours.LastSql = "SELECT 1"
Next
If answer <> "SELECT 1" Then WScript.Quit 1
For i = 0 To 3
  WScript.Echo names(i) & vbTab & Round3(best(i) * 1000) & vbTab & Round3(best(i) / best(0))
Next

Sub Note(which)
  Dim seconds
  seconds = Timer - start
  If IsEmpty(best(which)) Or seconds < best(which) Then best(which) = seconds
End Sub

Function Round3(number)
  Round3 = CLng(number * 1000) / 1000
End Function
