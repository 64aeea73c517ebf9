' Says in words whether programs can create the classes of vellum250 and reach a database.
'   cscript //nologo self-check.vbs ["connection string"]
' For 32-bit programs run it by %SystemRoot%\SysWOW64\cscript.exe. The exit code is 0 when all is well.
Option Explicit
Const ClassName = "vellum250.address"
Dim shell, files, bits, otherBits
Set shell = CreateObject("WScript.Shell")
Set files = CreateObject("Scripting.FileSystemObject")
bits = "64"
otherBits = "32"
If shell.ExpandEnvironmentStrings("%PROCESSOR_ARCHITECTURE%") = "x86" Then
  bits = "32"
  otherBits = "64"
End If

Dim component, classId, dll, failure
classId = Registered("HKCR\" & ClassName & "\CLSID\")
If classId <> "" Then dll = Registered("HKCR\CLSID\" & classId & "\InprocServer32\")
On Error Resume Next
Set component = CreateObject(ClassName)
failure = Err.Number
Err.Clear
On Error GoTo 0
If failure <> 0 Then GiveUp WhyNotCreated()
WScript.Echo "Class: " & ClassName & " is created by " & bits & "-bit programs."
If dll = "" Then
  WScript.Echo "Module: by a manifest, not by the registry."
Else
  WScript.Echo "Module: " & dll & ", version " & files.GetFileVersion(dll)
End If

If WScript.Arguments.Count = 0 Then
  WScript.Echo "Database: not tried; give a connection string to try one."
Else
  TryDatabase WScript.Arguments(0)
End If
WScript.Echo "All is well."
WScript.Quit 0

' The value at `key`, nothing when there is none.
Function Registered(key)
  On Error Resume Next
  Registered = ""
  Registered = shell.RegRead(key)
  Err.Clear
End Function

Sub GiveUp(words)
  WScript.Echo "NOT WELL: " & words
  WScript.Quit 1
End Sub

Function WhyNotCreated()
  Dim made
  made = " (error " & Hex(failure) & ")"
  If classId = "" Then
    WhyNotCreated = ClassName & " is not registered. Run install.cmd as administrator, or " & _
      "with /user."
  ElseIf dll = "" Then
    WhyNotCreated = ClassName & " is registered for " & otherBits & "-bit programs only, and " & _
      "this is a " & bits & "-bit one. Run install.cmd again; under IIS see " & _
      """Enable 32-Bit Applications"" of the pool."
  ElseIf Not files.FileExists(dll) Then
    WhyNotCreated = ClassName & " is registered, but its module is gone: " & dll & _
      ". Run install.cmd where the files are now."
  ElseIf BitsOf(dll) = otherBits Then
    WhyNotCreated = "wrong bitness: " & dll & " is for " & otherBits & "-bit programs, and " & _
      "this is a " & bits & "-bit one. Run install.cmd, which registers the right one for each."
  Else
    WhyNotCreated = dll & " is registered but cannot be loaded" & made & _
      ". See whether the file may be read and run by this user, and is not blocked."
  End If
End Function

' For what programs a module is: "64", "32", or nothing when it is no module.
Function BitsOf(path)
  Dim head, start, file
  BitsOf = ""
  On Error Resume Next
  Set file = files.OpenTextFile(path, 1)
  head = file.Read(1024)
  file.Close
  start = InStr(head, "PE" & Chr(0) & Chr(0))
  If start > 0 Then
    If Mid(head, start + 4, 1) = "d" Then BitsOf = "64"
    If Mid(head, start + 4, 1) = "L" Then BitsOf = "32"
  End If
End Function

' A look-up list of the reference schema, as forms show it.
Sub TryDatabase(connectionString)
  Dim list, number, words
  On Error Resume Next
  component.SysDebug False
  component.Connection connectionString
  list = component.AddressDropDownList("11")
  number = Err.Number
  words = Err.Description
  Err.Clear
  On Error GoTo 0
  If number = 0 Then
    WScript.Echo "Database: reached, and it has the tables of the look-up lists."
  ElseIf IsAboutDriver(LCase(words)) Then
    GiveUp "no such ODBC driver or data source for " & bits & "-bit programs: " & words & vbCrLf & _
      "Installed for SQL Server: " & InstalledDrivers()
  ElseIf InStr(LCase(words), "invalid object name") > 0 Then
    GiveUp "the database answers, but has not the tables of the library: " & words
  Else
    GiveUp "the database cannot be reached or refuses (error " & Hex(number) & "): " & words
  End If
End Sub

Function IsAboutDriver(words)
  Dim sign
  IsAboutDriver = False
  For Each sign In Array("no odbc driver", "no default driver", "can't open lib", _
      "could not be loaded", "architecture mismatch")
    If InStr(words, sign) > 0 Then IsAboutDriver = True
  Next
End Function

Function InstalledDrivers()
  Dim name
  For Each name In Array("ODBC Driver 18 for SQL Server", "ODBC Driver 17 for SQL Server", _
      "ODBC Driver 13 for SQL Server", "ODBC Driver 11 for SQL Server", _
      "SQL Server Native Client 11.0", "SQL Server")
    If Registered("HKLM\SOFTWARE\ODBC\ODBCINST.INI\" & name & "\Driver") <> "" Then
      InstalledDrivers = InstalledDrivers & name & "; "
    End If
  Next
  If InstalledDrivers = "" Then InstalledDrivers = "none; Microsoft offers it for download."
End Function
