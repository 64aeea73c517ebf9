' Texts and settings out of dictionaries: the run time's and a page's own.
Option Explicit

Class Texts
  Public Asked
  Public Property Get Count
    Count = 1
  End Property
  Public Function Exists(key)
    Exists = InStr(key, "Town") > 0
  End Function
  Public Function Item(key)
    Asked = Asked & key & " "
    Item = "<" & key & ">"
  End Function
End Class

Class Half
  Public Property Get Count
    Count = 1
  End Property
End Class

Class Unsure
  Public Property Get Count
    Count = 1
  End Property
  Public Function Exists(key)
    Exists = "perhaps"
  End Function
End Class

Dim page, settings, labels, own, form
Set page = NewPage
Set settings = CreateObject("Scripting.Dictionary")
settings.Add "globalEnablePaf", False
settings.Add "globalDisplayAsReadOnly", 1
settings.Add "globalShowLabel", "false"
page.appDictWebConfig settings
form = page.BuildAddress(4 + 64, 64, "Home")
ExpectPart "of the database", form, "Shown as:&nbsp;"
ExpectPart "a setting", form, "value=""Home"">"
Expect "another", InStr(form, "paf.js"), 0

Set labels = CreateObject("Scripting.Dictionary")
labels.Add "GeneralTown1", "City" & Chr(233) & ":"
labels.Add "GeneralDisplay Name1", Null
labels.Add "GeneralAddress12", "other text set"
page.appDictShowText labels
form = page.BuildAddress(4 + 64, 64)
ExpectPart "of the dictionary", form, "City" & Chr(233) & ":&nbsp;"
ExpectPart "validator", form, "Town,City&#233;:|"
ExpectPart "Null is no text", form, "Display Name:&nbsp;"
page.TextID 2
ExpectPart "text set", page.BuildAddress(0, 0), "other text set&nbsp;"
page.TextID 1

' It is the page's dictionary, not a copy, and lives as long as it is needed.
labels("GeneralTown1") = "Village:"
Set labels = Nothing
ExpectPart "changed", page.BuildAddress(64, 0), "Village:&nbsp;"
settings("globalEnablePaf") = "true"
ExpectPart "script", page.BuildAddress(64, 0), "<script src=""../common/paf.js"""
form = page.BuildAddress(64, 0)
Expect "once for each object", InStr(form, "../common/paf.js"), 0
ExpectPart "the block again", form, "prepareAddressForPaf"
settings.RemoveAll

Set own = New Texts
page.appDictShowText own
form = page.BuildAddress(64 + 128, 0)
ExpectPart "own class", form, "<GeneralTown1>&nbsp;"
Expect "asked for what exists", own.Asked, "GeneralTown1 "

On Error Resume Next
page.appDictShowText New Half
page.BuildAddress 64, 0
ExpectFailure 438, "Object doesn't support this property or method: Exists"
page.appDictShowText New Unsure
page.BuildAddress 64, 0
ExpectFailure 13, "Type mismatch: Exists of the page's dictionary"
page.GetFirstWord Null
ExpectFailure 94, "Invalid use of Null: sWord of GetFirstWord"
On Error GoTo 0
page.appDictShowText Nothing
ExpectPart "none", page.BuildAddress(64, 0), "Town:&nbsp;"
page.appDictShowText own
ExpectPart "as before", page.BuildAddress(64, 0), "<GeneralTown1>"

Finish
