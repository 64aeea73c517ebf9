' Every apartment has a context of its own.
Option Explicit
Dim page, texts

If Argument("apart") = "" Then
  Set page = NewPage
  page.TextID 2
  Set texts = CreateObject("Scripting.Dictionary")
  texts.Add "GeneralTown2", "Market:"
  page.appDictShowText texts
  ExpectPart "own text", page.BuildAddress(64, 0), "Market:&nbsp;"
  Expect "the other went well", RunApart("with its own context"), True
  ExpectPart "as before", page.BuildAddress(64, 0), "Market:&nbsp;"
  Expect "again", RunApart("after one that ended"), True
  Finish
Else
  Set page = Host.CreateObject("vellum250.address")
  On Error Resume Next
  page.GetSalutationName "Dr"
  Expect "no connection", Err.Number <> 0, True
  On Error GoTo 0
  page.Connection Argument("database")
  page.TextID 1
  ExpectPart "no dictionary", page.BuildAddress(64, 0), "Town:&nbsp;"
  page.appDictShowText CreateObject("Scripting.Dictionary")
End If
