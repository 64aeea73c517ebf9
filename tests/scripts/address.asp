<%@ language="VBScript" %>
<%
' A page of a members' area: shows the form of an address, stores what was posted, ends an address.
Option Explicit
Const Line2 = 16, Town = 64, County = 128, Postcode = 512, CountryList = 1024, Comments = 2048
Dim address, kind, owner, link, addressType, message

Set address = Server.CreateObject("vellum250.address")
address.Connection Request("database")
address.SysDebug Request("debug") = "on"
address.OnErrorOnly True
address.RemoteHostIP "127.0.0.1"
address.TextID 1
Set Application("texts") = Server.CreateObject("Scripting.Dictionary")
address.appDictShowText Application("texts")
Set Application("settings") = Server.CreateObject("Scripting.Dictionary")
Application("settings").Add "globalEnablePaf", "false"
address.appDictWebConfig Application("settings")

kind = Request.Form("EntityType")
owner = CLng(Request.Form("SysRef"))
link = CLng(Request.Form("LocRef"))
addressType = CLng("0" & Request.Form("LocType"))
If addressType = 0 Then addressType = 11
Select Case Request.Form("action")
  Case "save"
    Save
  Case "end"
    address.InvalidateLocation link
    message = "ended"
End Select

Sub Save
  Dim result, main
  main = Request.Form("main_loc")
  If main <> "Y" Then main = "N"
  On Error Resume Next
  result = address.AmmendLocation(kind, owner, link, , , Request.Form("Add1"), _
    Request.Form("Add2"), , Request.Form("Town"), Request.Form("County"), _
    Request.Form("Postcode"), , Request.Form("Cref"), main, addressType, _
    Request.Form("AddValidate"), , , , , , , Request.Form("Comm"))
  If Err.Number <> 0 Then
    message = "failed " & Hex(Err.Number) & " " & Err.Source & ": " & Err.Description
  ElseIf result = -1 Then
    message = "refused" & address.LastError
  ElseIf address.LastError <> "" Then
    message = "trapped " & address.LastError
  ElseIf result = 0 Then
    message = "nothing changed"
  Else
    message = "stored " & result & " main " & main
  End If
End Sub
%><p id="message"><%= message %></p>
<form method="post" action="address.asp"><table>
<%= address.BuildAddress(Line2 + Town + County + Postcode + CountryList + Comments, Town, , , _
      Request.Form("Add1"), Request.Form("Add2"), , Request.Form("Town"), Request.Form("County"), _
      Request.Form("Postcode"), , Request.Form("Cref"), addressType, "11,12,13", "N", , kind, owner, link, , _
      Request.Form("Comm")) %>
</table></form>
