' Every member as pages call it: by position, arguments left out in the middle and at the end.
Option Explicit
Dim page, location, link, town, main, display, country, invoice

Set page = NewPage
Expect "no statement yet", page.LastSql, ""
page.LastSql = "mine"
page.LastError = 5
Expect "properties", page.LastSql & page.LastError, "mine5"

' Names
Expect "one part", page.DisplayAddressName(, "Leeds"), "Leeds"
Expect "two parts", page.DisplayAddressName(" 12 High Street", , "west yorks"), _
  "12 High Street, WEST YORKS"
Expect "initials", page.GetInitials("anne marie"), "A M"
Expect "salutation", page.GetSalutationName("Dr", "Smith"), "Dr Smith"
Expect "known as", page.GetKnownAsName(, , "Mary Jane"), "Mary"
Expect "label", page.GetLabelName("Dr", "Smith", , "PhD", "A"), "Dr A Smith PhD"
Expect "first word", page.GetFirstWord("Mary Jane"), "Mary"

' A person's addresses
location = page.InsertIndividualAddress(49, , "Flat", "1 Low Lane", , , "Leeds", , "ls1 1aa", , 201, 11)
Expect "location", location, 72
Expect "link", page.LastSql, "INSERT INTO individual_loc (individual_ref, differentiator, type, " & _
  "location_ref, valid_from, main_location, edit_link, comments) VALUES (49, 'Flat', 11, 72, " & _
  "getdate(), 'Y', 0, NULL)"
Expect "second", page.InsertIndividualAddress(49, "Shown", , "2 Low Lane", , , , , , , , 12, , , _
  "N", 1, , "by post"), 73
ExpectPart "second link", page.LastSql, "73, getdate(), Null, 1, 'by post')"
link = page.CreateIndividualLinkAddress(60, location, 11, , 1)
Expect "linked", link, 77
Expect "updated", page.UpdateIndividualAddress(location, link, , , "1 High Lane", , , "York", , _
  "yo1 1aa", , , , , , "Y", , "getdate()"), location
ExpectPart "updated link", page.LastSql, "valid_to = GetDate(), comments = null WHERE ind_loc_ref = 77"
Expect "owner", page.ChangeLocationOwner(location, link, "individual"), True
Expect "no owner", page.ChangeLocationOwner(location, 4711, "I"), False
Expect "ended", page.InvalidateLocation(link), Empty
page.InvalidateLocation , 13
page.InvalidateLocation

' An organisation's and a contact's
Expect "organisation", page.InsertOrganisationAddress(1, , "Depot", "3 Low Lane", , , "Hull"), 74
Expect "its link", page.CreateOrganisationLinkAddress(2, 74, 12), 15
Expect "its update", page.UpdateOrganisationAddress(74, 15, , "Store", "4 Low Lane"), 74
ExpectPart "its statement", page.LastSql, "differentiator = 'Store'"
Expect "contact", page.InsertContactAddress(1, , , "5 Low Lane", , , , , , , , 12, , , , , "c"), 75
Expect "its link", page.CreateContactLinkAddress(2, 75, , "Y", , "Desk"), 15
Expect "its update", page.UpdateContactAddress(15, "Desk two", , "6 Low Lane"), 75
ExpectPart "its statement", page.LastSql, "display_name = 'Desk two'"

' Forms
ExpectPart "list", page.AddressDropDownList("11,12", 12), "<select class=""AnswerText"" id=""LocType"""
ExpectPart "choice", page.AddressDropDownList("11,12", 12, "Kind", False, "HO"), _
  "<option value=""12"" selected>Work</option>"
Expect "empty list", page.AddressDropDownList("4711"), Empty
ExpectPart "form", page.BuildAddress(4, 0, , , "12 High Street", , , , , , , , 11, "11,12", , False), _
  "id=""main_loc"" name=""main_loc"" value=""Y"">"
Expect "refused", page.AmmendLocation("individual", 17, , , , , , , , , , , , , , _
  "Add1,Address:|Town,Town:|"), -1
Expect "messages", page.LastError, "|Address: is a mandatory field.|Town: is a mandatory field."
Expect "checked", page.AmmendLocation("individual", 17, , , , "a", , , , , , , , , , "Add1|", True), 0
Expect "stored", page.AmmendLocation("individual", 17, 0, , , "7 Low Lane"), 78

Finish
