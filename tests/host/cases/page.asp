<%@ language="VBScript" %>
<% Option Explicit
Dim i, town
For i = 1 To 2 %><b><%= i %></b>
<% Next
Application("Town") = Request.Form("Town")
Set Application("d") = Server.CreateObject("Scripting.Dictionary")
Application("D").Add "k", 5
town = Request("town")
Response.Write Application("TOWN") & TypeName(town) & Application("d").Item("k") & "|"
Response.Write Request.QueryString("none") & Request.QueryString("town").Count & IsEmpty(Request("none"))
%>
<%
Err.Raise 1234, "here", "ends"
%>
