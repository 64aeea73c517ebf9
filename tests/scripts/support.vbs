
' ---- What every script of VBScript ends with: see run.mjs. ----

Dim expectations, disappointments

' The same value and the same type.
Sub Expect(what, got, wanted)
  expectations = expectations + 1
  If Shown(got) = Shown(wanted) Then Exit Sub
  disappointments = disappointments + 1
  Print "failed: " & what & ": " & Shown(got) & ", not " & Shown(wanted)
End Sub

Sub ExpectPart(what, got, part)
  expectations = expectations + 1
  If InStr(got, part) > 0 Then Exit Sub
  disappointments = disappointments + 1
  Print "failed: " & what & ": no " & Shown(part) & " in " & Shown(got)
End Sub

' What the last statement raised under On Error Resume Next.
Sub ExpectFailure(number, words)
  Dim got
  got = Err.Number & " " & Err.Source & ": " & Err.Description
  Err.Clear
  Expect "failure", got, number & " vellum250: " & words
End Sub

Function Shown(value)
  Shown = TypeName(value)
  If Shown = "Integer" Then Shown = "Long"
  If Not IsObject(value) Then Shown = Shown & " [" & value & "]"
End Function

' An address object with the context that a page sets.
Function NewPage()
  ' Not by the engine's own function, which under Wine keeps hold of the class.
  Set NewPage = Host.CreateObject("vellum250.address")
  NewPage.Connection Argument("database")
  NewPage.SysDebug False
  NewPage.OnErrorOnly False
  NewPage.RemoteHostIP "127.0.0.1"
  NewPage.TextID 1
  NewPage.appDictShowText CreateObject("Scripting.Dictionary")
  NewPage.appDictWebConfig CreateObject("Scripting.Dictionary")
End Function

Sub Finish()
  If disappointments = 0 And expectations > 0 Then Print "passed " & expectations
End Sub
