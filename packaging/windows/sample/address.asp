<%@ language="VBScript" codepage="65001" %>
<%
' The address of one person: shows the form, tells what is wrong with what was sent, stores a new
' address and changes it. The folder's App_Data holds the sample database; Application("connection")
' takes another in its place.
Option Explicit
Const Line2 = 16, Town = 64, County = 128, Postcode = 512, CountryList = 1024
Const Individual = "INDIVIDUAL", Person = 17, HomeAddress = 11
Dim address, connection, texts, settings, link, message, addressType, country

connection = Application("connection")
If connection = "" Then
  connection = "Driver=Vellum250;Database={" & Server.MapPath("App_Data/members.db") & "};"
End If
' Texts and settings by name, of which a site keeps one set for all its pages. Those that are
' missing have defaults.
Set texts = Server.CreateObject("Scripting.Dictionary")
texts.Add "GeneralTown1", "Town:"
texts.Add "GeneralCounty1", "County:"
texts.Add "GeneralPostCode1", "Postcode:"
Set settings = Server.CreateObject("Scripting.Dictionary")
settings.Add "globalEnablePaf", "false"

' The settings of the thread: every page sets what it relies on.
Set address = Server.CreateObject("vellum250.address")
address.Connection connection
address.SysDebug True
address.RemoteHostIP "" & Request.ServerVariables("REMOTE_ADDR")
address.TextID 1
address.appDictShowText texts
address.appDictWebConfig settings

link = NumberIn("LocRef")
addressType = NumberIn("LocType")
If addressType = 0 Then addressType = HomeAddress
country = NumberIn("Cref")
If Request.Form("save") <> "" And message = "" Then Save

' A number that was sent, 0 when there is none. Anything else was not sent by this form.
Function NumberIn(name)
  NumberIn = 0
  If Request.Form(name) = "" Then Exit Function
  On Error Resume Next
  NumberIn = CLng(Request.Form(name))
  If Err.Number <> 0 Then message = "Not stored: " & name & " is no number."
  Err.Clear
End Function

Sub Save
  Dim result, main, isNew
  isNew = (link = 0)
  main = "N"
  address.LastError = ""
  If Request.Form("main_loc") = "Y" Then main = "Y"
  ' `link` comes back changed: the number of the address that was stored.
  result = address.AmmendLocation(Individual, Person, link, , , Request.Form("Add1"), _
    Request.Form("Add2"), , Request.Form("Town"), Request.Form("County"), _
    Request.Form("Postcode"), , country, main, addressType, Request.Form("AddValidate"))
  If Left(address.LastError, 13) = "Description: " Then
    message = "Not stored: " & address.LastError
  ElseIf result = -1 Then
    message = "Please complete: " & Replace(address.LastError, "|", " ")
  ElseIf isNew Then
    message = "Stored as number " & link & "."
  Else
    message = "Changed."
  End If
End Sub
%><!DOCTYPE html>
<html lang="en"><head><title>Address</title></head><body>
<p><%= Server.HTMLEncode("" & message) %></p>
<form method="post" action="address.asp">
<table>
<%= address.BuildAddress(Line2 + Town + County + Postcode + CountryList, Town + Postcode, , , _
      Request.Form("Add1"), Request.Form("Add2"), , Request.Form("Town"), Request.Form("County"), _
      Request.Form("Postcode"), , country, addressType, "11,12,13", "N", True, _
      Individual, Person, link) %>
</table>
<input type="submit" name="save" value="Save">
</form>
</body></html>
