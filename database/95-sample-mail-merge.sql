-- Sample merge fields. Group 1 writes to members, group 2 also about accounts.

SET IDENTITY_INSERT web_mailmerge ON
INSERT INTO web_mailmerge (web_mailmerge_ref, merge_field, merge_description, merge_sql) VALUES
  (1, '[Name]', 'Name as on the envelope',
   'SELECT account_name FROM member WHERE member_ref = [/MEM]'),
  (2, '[Dear]', 'Salutation',
   'SELECT i.salutation FROM member m JOIN individual i ON i.individual_ref = m.individual_ref WHERE m.member_ref = [/MEM]'),
  (3, '[MemberNumber]', 'Membership number',
   'SELECT member_ref FROM member WHERE member_ref = [/MEM]'),
  (4, '[InvoiceAddress]', 'Invoice address',
   'SELECT l.display_name FROM member m JOIN location l ON l.location_ref = m.invoice_location WHERE m.member_ref = [/MEM]'),
  (5, '[Today]', 'Date of today',
   'SELECT convert(varchar, getdate(), 106)')
SET IDENTITY_INSERT web_mailmerge OFF
GO

INSERT INTO web_mailmerge_permission (web_mailmerge_ref, web_mailmerge_group_ref) VALUES
  (1, 1),
  (2, 1),
  (3, 1),
  (5, 1),
  (1, 2),
  (2, 2),
  (3, 2),
  (4, 2),
  (5, 2)
GO
