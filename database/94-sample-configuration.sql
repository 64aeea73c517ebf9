-- Sample texts, settings and name templates.

-- Settings. "true" and "false" where a switch is read, numbers where a number is.
--   globalDisplayAsReadOnly  0: display names are composed, not typed; 1: they may be typed
--   globalLocationUpdate_N   what amending an address of type N does: 1 changes it in place, 2 ends
--                            it and adds a new one, 0 lets globalNewUpdate decide
--   globalNewUpdate          so many changed fields make a new address
--   globalTelNoDisp          0: one box for a whole number; 1: the dialling code has its own
INSERT INTO web_config (global_config, setting) VALUES
  ('globalShowLabel', 'false'),
  ('globalLabelsMyIPOnly', 'false'),
  ('globalLablesIPAddress', '127.0.0.1'),
  ('globalEnablePaf', 'true'),
  ('globalDisplayAsReadOnly', '0'),
  ('globalNewUpdate', '3'),
  ('globalLocationUpdate_0', '0'),
  ('globalLocationUpdate_11', '0'),
  ('globalLocationUpdate_12', '1'),
  ('globalLocationUpdate_13', '0'),
  ('globalLocationUpdate_14', '2'),
  ('globalLocationUpdate_15', '1'),
  ('globalLocationUpdate_16', '1'),
  ('globalLocationUpdate_17', '1'),
  ('globalEmailUpd', '1'),
  ('globalTeleUpd', '1'),
  ('globalTelNoDisp', '1')
GO

INSERT INTO app_profile (section, entry, value) VALUES
  ('LabelName', 'Label', '<Title> <Initials> <Surname> <Honours>'),
  ('LabelName', 'Salutation', '<Title> <Surname>'),
  ('LabelName', 'KnownAs', '<Forename1>')
GO

-- Text set 1: English.
INSERT INTO web_text (web_text_area, web_text_label, text_id, web_text) VALUES
  ('General', 'Display Name', 1, 'Shown as:'),
  ('General', 'DisplayName', 1, 'Shown as:'),
  ('General', 'Differentiator', 1, 'Note on the address:'),
  ('General', 'Address1', 1, 'Address:'),
  ('General', 'Address2', 1, 'Address line 2:'),
  ('General', 'Address3', 1, 'Address line 3:'),
  ('General', 'Town', 1, 'Town:'),
  ('General', 'County', 1, 'County:'),
  ('General', 'PostCode', 1, 'Postcode:'),
  ('General', 'Country', 1, 'Country:'),
  ('General', 'NoCountryList', 1, '[Not Specified]'),
  ('General', 'LocType', 1, 'Type of address:'),
  ('General', 'MainLocation', 1, 'Main address:'),
  ('General', 'LocationComments', 1, 'Comments:'),
  ('General', 'PAFText', 1,
   'Enter the house number into the address and the postcode, then click ''Find Address''.'),
  ('General', 'Title', 1, 'Title:'),
  ('General', 'Forename', 1, 'Forename(s):'),
  ('General', 'Surname', 1, 'Surname:'),
  ('General', 'Salutation', 1, 'Dear:'),
  ('General', 'Honours', 1, 'Letters after your name:'),
  ('General', 'DOB', 1, 'Date of birth:'),
  ('General', 'DOBMask', 1, '(dd-mmm-yyyy)'),
  ('General', 'GenderMale', 1, 'Male'),
  ('General', 'GenderFemale', 1, 'Female'),
  ('General', 'NiNumber', 1, 'National Insurance number:'),
  ('General', 'Email', 1, 'E-mail:'),
  ('General', 'EmailType', 1, 'Type of e-mail:'),
  ('General', 'EmailDefault', 1, 'Main e-mail:'),
  ('General', 'Telephone', 1, 'Telephone:'),
  ('General', 'Fax', 1, 'Fax:'),
  ('General', 'Extension', 1, 'Ext:'),
  ('General', 'TelephoneDefault', 1, 'Main number:'),
  ('General', 'PhoneType', 1, 'Type of telephone:'),
  ('General', 'TelephoneType', 1, 'Type of telephone:'),
  ('General', 'FaxType', 1, 'Type of fax:'),
  ('General', 'OrgParentTitle', 1, 'Part of:'),
  ('General', 'OrgTypeTitle', 1, 'Type:'),
  ('General', 'OrgStatusTitle', 1, 'Status:'),
  ('General', 'OrgHeadCount', 1, 'Employees:'),
  ('Update', 'CompanyNameLabel', 1, 'Company or organisation:'),
  ('Lookup', '13', 1, 'Correspondence (post goes here)'),
  ('MailMerge', '[Name]', 1, 'Name ([/VAR])'),
  ('MailMerge', '[Dear]', 1, 'Salutation ([/VAR])')
GO

-- Text set 2: Welsh, begun. What is missing shows the page's default, [/BLANK] shows nothing.
INSERT INTO web_text (web_text_area, web_text_label, text_id, web_text) VALUES
  ('General', 'Address1', 2, 'Cyfeiriad:'),
  ('General', 'Address2', 2, '[/BLANK]'),
  ('General', 'Address3', 2, '[/BLANK]'),
  ('General', 'Town', 2, 'Tref:'),
  ('General', 'County', 2, 'Sir:'),
  ('General', 'PostCode', 2, 'Cod post:'),
  ('General', 'Country', 2, 'Gwlad:'),
  ('General', 'Surname', 2, 'Cyfenw:'),
  ('General', 'Email', 2, 'E-bost:'),
  ('Lookup', '201', 2, 'Y Deyrnas Unedig')
GO
