' What comes back changed, whatever it was before, and what does not.
Option Explicit
Dim page, name, main, display, country, edit, invoice, link, entry, unset, address1
Set page = NewPage

name = "Mary Jane"
Expect "result", page.GetFirstWord(name), "Mary"
Expect "variable", name, "Mary"
page.GetFirstWord (name & " Ann")
Expect "an expression", name, "Mary"
name = "Mary Jane"
page.GetFirstWord((name))
Expect "in parentheses", name, "Mary Jane"
name = 5
page.GetFirstWord name
Expect "a number", name, 5

' Variables of other types than the parameters, and one that never had a value.
edit = "3"
address1 = " 1 Low Lane "
invoice = 0
page.InsertIndividualAddress 49, display, , address1, , , "Leeds", , , country, 201, 11, , , main, _
  edit, invoice
Expect "main", main, "'Y'"
Expect "display", display, "1 Low Lane, Leeds"
Expect "country", country, "United Kingdom"
Expect "edit", edit, CByte(1)
Expect "invoice", invoice, True
Expect "not changed", address1, " 1 Low Lane "
main = "N"
invoice = False
page.CreateIndividualLinkAddress 17, 72, 11, main, 0, invoice
Expect "linked", main & " " & invoice, "Null False"
main = "N"
page.UpdateOrganisationAddress 1, 1, , , "a", , , , , , country, 203, , , , main
Expect "updated", main & " " & country, "'N' France"

' The reference of a new address, into a variable, an element and a property's place.
link = Empty
main = "N"
Expect "amended", page.AmmendLocation("INDIVIDUAL", 60, link, , , "1 High Lane", , , , , , , , main), 77
Expect "reference", link, 77
Expect "its main", main, "'Y'"
entry = Array(0, "x")
page.AmmendLocation "INDIVIDUAL", 60, entry(0), , , "2 High Lane"
Expect "element", entry(0), 78
Expect "neighbour", entry(1), "x"
StoreFor 60, unset
Expect "through a procedure", unset, 79

Sub StoreFor(person, reference)
  page.AmmendLocation "INDIVIDUAL", person, reference, , , "3 High Lane"
End Sub

' A failure leaves what the method changed until then.
page.SysDebug True
display = Empty
main = "N"
page.InsertIndividualAddress 49, display, , "1 Low Lane", , , , , , , , , , , main, , , "it's"
Expect "changed before it failed", main & " " & display, "Null 1 Low Lane"
ExpectPart "trapped", page.LastError, "<br>Step: 4 of 6"

Finish
