-- Sample data of a small professional body, everything invented: nobody lives in these places, the
-- postcodes cannot be given out, telephone numbers are from the ranges kept for fiction.
-- The file is UTF-8 with a byte order mark; sqlcmd wants -f 65001 to read its accents.
-- References are given, so that the other sample files and pages may use them.

SET IDENTITY_INSERT lookup_type ON
INSERT INTO lookup_type (lookup_type_ref, lookup_type_code, lookup_type_desc) VALUES
  (1, 'CTRY', 'Countries'),
  (2, 'ADDT', 'Address types'),
  (3, 'TELT', 'Telephone types'),
  (4, 'EMAT', 'E-mail types'),
  (5, 'INDS', 'Statuses of people'),
  (6, 'INDT', 'Types of people'),
  (7, 'ORGS', 'Statuses of organisations'),
  (8, 'ORGT', 'Types of organisations'),
  (9, 'CONS', 'Statuses of posts'),
  (10, 'CONT', 'Types of posts'),
  (11, 'CPDS', 'Statuses of CPD programmes'),
  (12, 'CPDG', 'Grades of CPD'),
  (13, 'CPDU', 'Units of CPD')
SET IDENTITY_INSERT lookup_type OFF
GO

-- Address types
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (11, 2, 'HOME', 'Home', NULL),
  (12, 2, 'WORK', 'Work', NULL),
  (13, 2, 'CORR', 'Correspondence', NULL),
  (14, 2, 'ACCT', 'Accounts and invoices', NULL),
  (15, 2, 'TERM', 'Term time', NULL),
  (16, 2, 'REGO', 'Registered office', NULL),
  (17, 2, 'BRCH', 'Branch', NULL)
SET IDENTITY_INSERT lookup OFF
GO

-- Telephone types
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (21, 3, 'HOME', 'Home telephone', NULL),
  (22, 3, 'WORK', 'Work telephone', NULL),
  (23, 3, 'MOB', 'Mobile', NULL),
  (24, 3, 'SWBD', 'Switchboard', NULL),
  (25, 3, 'FAX', 'Fax', NULL),
  (26, 3, 'FAXW', 'Work fax', NULL),
  (27, 3, 'TELEX', 'Telex', '19991231')
SET IDENTITY_INSERT lookup OFF
GO

-- E-mail types
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (31, 4, 'HOME', 'Personal e-mail', NULL),
  (32, 4, 'WORK', 'Work e-mail', NULL),
  (33, 4, 'ACCT', 'Accounts e-mail', NULL),
  (34, 4, 'WWW', 'Web site', NULL),
  (35, 4, 'WWWP', 'Personal web page', NULL)
SET IDENTITY_INSERT lookup OFF
GO

-- Statuses of people
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (41, 5, 'MEMB', 'Member', NULL),
  (42, 5, 'APPL', 'Applicant', NULL),
  (43, 5, 'RETD', 'Retired', NULL),
  (44, 5, 'LAPS', 'Lapsed', NULL)
SET IDENTITY_INSERT lookup OFF
GO

-- Types of people
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (51, 6, 'FULL', 'Full member', NULL),
  (52, 6, 'ASSC', 'Associate', NULL),
  (53, 6, 'STUD', 'Student', NULL),
  (54, 6, 'HONF', 'Honorary fellow', NULL)
SET IDENTITY_INSERT lookup OFF
GO

-- Statuses of organisations
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (61, 7, 'ACTV', 'Active', NULL),
  (62, 7, 'LAPS', 'Lapsed', NULL)
SET IDENTITY_INSERT lookup OFF
GO

-- Types of organisations
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (71, 8, 'COMP', 'Company', NULL),
  (72, 8, 'UNIV', 'University', NULL),
  (73, 8, 'CHAR', 'Charity', NULL),
  (74, 8, 'GOVT', 'Public body', NULL)
SET IDENTITY_INSERT lookup OFF
GO

-- Statuses of posts
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (81, 9, 'CURR', 'Current', NULL),
  (82, 9, 'LEFT', 'Left', NULL)
SET IDENTITY_INSERT lookup OFF
GO

-- Types of posts
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (91, 10, 'MAIN', 'Main contact', NULL),
  (92, 10, 'ACCT', 'Accounts contact', NULL),
  (93, 10, 'TRNG', 'Training contact', NULL)
SET IDENTITY_INSERT lookup OFF
GO

-- Statuses of CPD programmes
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (101, 11, 'PROG', 'In progress', NULL),
  (102, 11, 'DONE', 'Completed', NULL),
  (103, 11, 'DEFR', 'Deferred', NULL)
SET IDENTITY_INSERT lookup OFF
GO

-- Grades of CPD
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (111, 12, 'PASS', 'Pass', NULL),
  (112, 12, 'MERT', 'Merit', NULL),
  (113, 12, 'DIST', 'Distinction', NULL)
SET IDENTITY_INSERT lookup OFF
GO

-- Units of CPD
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (121, 13, 'HRS', 'Hours', NULL),
  (122, 13, 'PTS', 'Points', NULL)
SET IDENTITY_INSERT lookup OFF
GO

-- Countries
SET IDENTITY_INSERT lookup ON
INSERT INTO lookup (lookup_ref, lookup_type_ref, lookup_code, lookup_full_desc, valid_to) VALUES
  (201, 1, 'UK', 'United Kingdom', NULL),
  (202, 1, 'IE', 'Ireland', NULL),
  (203, 1, 'FR', 'France', NULL),
  (204, 1, 'DE', 'Germany', NULL),
  (205, 1, 'NL', 'Netherlands', NULL),
  (206, 1, 'BE', 'Belgium', NULL),
  (207, 1, 'LU', 'Luxembourg', NULL),
  (208, 1, 'ES', 'Spain', NULL),
  (209, 1, 'PT', 'Portugal', NULL),
  (210, 1, 'IT', 'Italy', NULL),
  (211, 1, 'CH', 'Switzerland', NULL),
  (212, 1, 'AT', 'Austria', NULL),
  (213, 1, 'DK', 'Denmark', NULL),
  (214, 1, 'NO', 'Norway', NULL),
  (215, 1, 'SE', 'Sweden', NULL),
  (216, 1, 'FI', 'Finland', NULL),
  (217, 1, 'IS', 'Iceland', NULL),
  (218, 1, 'PL', 'Poland', NULL),
  (219, 1, 'CZ', 'Czech Republic', NULL),
  (220, 1, 'GR', 'Greece', NULL),
  (221, 1, 'MT', 'Malta', NULL),
  (222, 1, 'US', 'United States', NULL),
  (223, 1, 'CA', 'Canada', NULL),
  (224, 1, 'AU', 'Australia', NULL),
  (225, 1, 'NZ', 'New Zealand', NULL),
  (226, 1, 'ZA', 'South Africa', NULL),
  (227, 1, 'IN', 'India', NULL),
  (228, 1, 'JP', 'Japan', NULL),
  (229, 1, 'CI', 'Côte d''Ivoire', NULL),
  (230, 1, 'YU', 'Yugoslavia', '20030204')
SET IDENTITY_INSERT lookup OFF
GO
