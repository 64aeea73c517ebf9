' What Err tells.
Option Explicit
Dim page, none, d
Set page = NewPage
On Error Resume Next

page.BuildAddress 4
ExpectFailure 449, "Argument not optional: mandatorybitwise of vellum250.address.BuildAddress"
page.GetInitials "a", "b"
ExpectFailure 450, "Wrong number of arguments or invalid property assignment: " & _
  "vellum250.address.GetInitials takes 1, not 2"
page.TextID "one"
ExpectFailure 13, "Type mismatch: TxtID of TextID"
page.TextID page
ExpectFailure 13, "Type mismatch: TxtID of TextID"
page.GetInitials Null
ExpectFailure 94, "Invalid use of Null: sInput of GetInitials"
page.BuildAddress 4, 4, Null
ExpectFailure 94, "Invalid use of Null: sfDisplayName of BuildAddress"
page.BuildAddress 40000, 4
ExpectFailure 6, "Overflow: detailsbitwise of BuildAddress"
page.appDictShowText "texts"
ExpectFailure 424, "Object required: dictObjDictShowText of appDictShowText"
page.DisplayAddressName
ExpectFailure 5, "Invalid procedure call or argument: a display name wants an address line, " & _
  "a town or a county"
page.BuildAddress 4, 4, , , , , , , , , , , , , , , , , , , , "Driver=Vellum250;"
ExpectFailure 91, "Object variable not set: BuildAddress takes no connectionString"

' The engine's own words for what it finds out by itself.
page.BuildAdress 4, 4
Expect "no such member", Err.Number, 438
Err.Clear
page.LastSQLs = 1
Expect "no such property", Err.Number, 438
Err.Clear
Set none = CreateObject("vellum250.adress")
Expect "no such class", Err.Number & IsEmpty(none), "429True"
Err.Clear

' The database's
page.Connection "Driver=Vellum250;Database=missing.db;"
page.GetSalutationName "Dr"
Expect "no database", Err.Number, &H80004005
ExpectPart "in words", Err.Description, "missing.db"
Err.Clear
page.Connection Argument("database")
page.AddressDropDownList "11,,12"
Expect "no statement", Err.Number, &H80040E14
Err.Clear
page.UpdateIndividualAddress 14, , , , String(200, "x")
Expect "too long", Err.Number < 0, True
ExpectPart "in words", Err.Description, "truncated"
Err.Clear

' With the trap set the page sees no failure but its words.
page.SysDebug True
Expect "trapped", page.InsertIndividualAddress(49, , , "a", , , , , , , , , , , , , , "it's"), 72
Expect "nothing raised", Err.Number, 0
ExpectPart "description", page.LastError, "Description: "
ExpectPart "source", page.LastError, "<br>Source: "
ExpectPart "step", page.LastError, "<br>Step: 4 of 6"
page.BuildAddress 4
Expect "a wrong call is raised all the same", Err.Number, 449
Err.Clear

On Error GoTo 0
Finish
