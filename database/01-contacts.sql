-- Contacts: people, organisations, the posts that people hold in organisations, their addresses,
-- telephone numbers and e-mail addresses, and the lists of choices that all of them use.
--
-- For SQL Server and for the embedded database; load the files of this folder in order of name.
-- Dates are datetime. A row is current while valid_to is null or lies in the future.

-- A list of choices: CTRY countries, ADDT address types, TELT telephone types, EMAT e-mail types,
-- INDS and INDT statuses and types of people, ORGS and ORGT of organisations, CONS and CONT of
-- posts, CPDS statuses, CPDG grades and CPDU units of professional development.
CREATE TABLE lookup_type (
  lookup_type_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_lookup_type PRIMARY KEY,
  lookup_type_code varchar(20) NOT NULL CONSTRAINT uq_lookup_type_code UNIQUE,
  lookup_type_desc varchar(100) NULL
)
GO

-- A choice. Codes tell kinds apart where one list holds several: FAX... among the telephone types,
-- WWW... (web sites) among the e-mail types, UK is the country offered first.
CREATE TABLE lookup (
  lookup_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_lookup PRIMARY KEY,
  lookup_type_ref int NOT NULL CONSTRAINT fk_lookup_type REFERENCES lookup_type (lookup_type_ref),
  lookup_code varchar(20) NOT NULL,
  lookup_full_desc varchar(100) NULL,
  valid_to datetime NULL,
  CONSTRAINT uq_lookup_code UNIQUE (lookup_type_ref, lookup_code)
)
GO

-- Names are composed from up to four parts by the templates in app_profile, and initials may grow
-- to twice the length of the forenames: the composed columns are that wide.
CREATE TABLE individual (
  individual_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_individual PRIMARY KEY,
  individual_status int NULL CONSTRAINT fk_individual_status REFERENCES lookup (lookup_ref),
  title varchar(40) NULL,
  forenames varchar(60) NULL,
  initials varchar(125) NULL,
  surname varchar(60) NULL,
  honours varchar(60) NULL,
  known_as varchar(255) NULL,
  salutation varchar(255) NULL,
  label_name varchar(255) NULL,
  date_of_birth datetime NULL,
  gender char(1) NULL,
  comments varchar(max) NULL,
  previous_surname varchar(60) NULL,
  overseas char(1) NULL,
  exclude_direct_m char(1) NULL,
  type int NULL CONSTRAINT fk_individual_type REFERENCES lookup (lookup_ref),
  ni_number varchar(40) NULL
)
CREATE INDEX ix_individual_surname ON individual (surname, forenames)
GO

CREATE TABLE organisation (
  organisation_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_organisation PRIMARY KEY,
  type int NULL CONSTRAINT fk_organisation_type REFERENCES lookup (lookup_ref),
  company_name varchar(100) NULL,
  trading_as varchar(100) NULL,
  label_name varchar(255) NULL,
  overseas char(1) NULL,
  head_office char(1) NULL,
  comments varchar(max) NULL,
  status int NULL CONSTRAINT fk_organisation_status REFERENCES lookup (lookup_ref),
  exclude_direct_m char(1) NULL
)
CREATE INDEX ix_organisation_company_name ON organisation (company_name)
GO

-- A person's post in an organisation.
CREATE TABLE contact (
  contact_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_contact PRIMARY KEY,
  organisation_ref int NOT NULL
    CONSTRAINT fk_contact_organisation REFERENCES organisation (organisation_ref),
  individual_ref int NOT NULL
    CONSTRAINT fk_contact_individual REFERENCES individual (individual_ref),
  job_title varchar(100) NULL,
  display_name varchar(255) NULL,
  contact_status int NULL CONSTRAINT fk_contact_status REFERENCES lookup (lookup_ref),
  type int NULL CONSTRAINT fk_contact_type REFERENCES lookup (lookup_ref),
  valid_from datetime NULL,
  valid_to datetime NULL,
  main_contact char(1) NULL,
  main_organisation char(1) NULL,
  exclude_direct_m char(1) NULL,
  rank smallint NOT NULL CONSTRAINT df_contact_rank DEFAULT 0
)
CREATE INDEX ix_contact_organisation ON contact (organisation_ref)
CREATE INDEX ix_contact_individual ON contact (individual_ref)
GO

-- An address, stored once however many owners share it. display_name holds address line 1, town and
-- county joined with ", "; country holds the lookup_full_desc of country_ref when that is known.
CREATE TABLE location (
  location_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_location PRIMARY KEY,
  display_name varchar(255) NULL,
  building_number varchar(20) NULL,
  building_name varchar(80) NULL,
  address1 varchar(80) NULL,
  address2 varchar(80) NULL,
  address3 varchar(80) NULL,
  town varchar(80) NULL,
  county varchar(80) NULL,
  postcode varchar(15) NULL,
  country varchar(100) NULL,
  country_ref int NULL CONSTRAINT fk_location_country REFERENCES lookup (lookup_ref),
  region1 int NULL,
  region2 int NULL
)
CREATE INDEX ix_location_postcode ON location (postcode)
GO

-- The membership of a person or of an organisation, whichever of the two is set.
CREATE TABLE member (
  member_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_member PRIMARY KEY,
  individual_ref int NULL CONSTRAINT fk_member_individual REFERENCES individual (individual_ref),
  organisation_ref int NULL
    CONSTRAINT fk_member_organisation REFERENCES organisation (organisation_ref),
  account_name varchar(255) NULL,
  invoice_location int NULL
    CONSTRAINT fk_member_invoice_location REFERENCES location (location_ref),
  receipt_location int NULL
    CONSTRAINT fk_member_receipt_location REFERENCES location (location_ref)
)
CREATE INDEX ix_member_individual ON member (individual_ref)
CREATE INDEX ix_member_organisation ON member (organisation_ref)
GO

-- The links between owners and locations: one table for each kind of owner.
--   main_location  'Y' on at most one link of an owner; varchar, so that isNull(main_location, '')
--                  is empty and not a blank
--   edit_link      1 on the one link of a location (in all three tables) that may amend it, else 0
-- A link always has its location. Whoever adds an address inserts the location first and goes on
-- with reference 0 when that failed: the key then refuses the link too, so that no owner is left
-- with an address that is not there.
-- type is a lookup_ref of the list ADDT, or 0 when none was given. It has no foreign key: callers
-- rely on storing the 0.
CREATE TABLE individual_loc (
  ind_loc_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_individual_loc PRIMARY KEY,
  individual_ref int NOT NULL
    CONSTRAINT fk_individual_loc_individual REFERENCES individual (individual_ref),
  type int NULL,
  location_ref int NOT NULL
    CONSTRAINT fk_individual_loc_location REFERENCES location (location_ref),
  valid_from datetime NULL,
  valid_to datetime NULL,
  main_location varchar(1) NULL,
  differentiator varchar(80) NULL,
  edit_link tinyint NOT NULL CONSTRAINT df_individual_loc_edit_link DEFAULT 0,
  comments varchar(max) NULL
)
CREATE INDEX ix_individual_loc_individual ON individual_loc (individual_ref)
CREATE INDEX ix_individual_loc_location ON individual_loc (location_ref)
GO

CREATE TABLE organisation_loc (
  org_loc_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_organisation_loc PRIMARY KEY,
  organisation_ref int NOT NULL
    CONSTRAINT fk_organisation_loc_organisation REFERENCES organisation (organisation_ref),
  type int NULL,
  location_ref int NOT NULL
    CONSTRAINT fk_organisation_loc_location REFERENCES location (location_ref),
  valid_from datetime NULL,
  valid_to datetime NULL,
  main_location varchar(1) NULL,
  differentiator varchar(80) NULL,
  edit_link tinyint NOT NULL CONSTRAINT df_organisation_loc_edit_link DEFAULT 0,
  comments varchar(max) NULL
)
CREATE INDEX ix_organisation_loc_organisation ON organisation_loc (organisation_ref)
CREATE INDEX ix_organisation_loc_location ON organisation_loc (location_ref)
GO

CREATE TABLE contact_loc (
  cont_loc_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_contact_loc PRIMARY KEY,
  contact_ref int NOT NULL CONSTRAINT fk_contact_loc_contact REFERENCES contact (contact_ref),
  type int NULL,
  location_ref int NOT NULL CONSTRAINT fk_contact_loc_location REFERENCES location (location_ref),
  valid_from datetime NULL,
  valid_to datetime NULL,
  main_location varchar(1) NULL,
  differentiator varchar(80) NULL,
  edit_link tinyint NOT NULL CONSTRAINT df_contact_loc_edit_link DEFAULT 0,
  comments varchar(max) NULL
)
CREATE INDEX ix_contact_loc_contact ON contact_loc (contact_ref)
CREATE INDEX ix_contact_loc_location ON contact_loc (location_ref)
GO

-- main_number is 'Y' on at most one voice number and one fax number of an owner.
CREATE TABLE telephone (
  telephone_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_telephone PRIMARY KEY,
  individual_ref int NULL CONSTRAINT fk_telephone_individual REFERENCES individual (individual_ref),
  organisation_ref int NULL
    CONSTRAINT fk_telephone_organisation REFERENCES organisation (organisation_ref),
  Contact_Ref int NULL CONSTRAINT fk_telephone_contact REFERENCES contact (contact_ref),
  type int NULL CONSTRAINT fk_telephone_type REFERENCES lookup (lookup_ref),
  std_code varchar(20) NULL,
  number varchar(30) NULL,
  extension varchar(20) NULL,
  main_number char(1) NULL,
  comments varchar(max) NULL,
  valid_from datetime NULL,
  valid_to datetime NULL
)
CREATE INDEX ix_telephone_individual ON telephone (individual_ref)
CREATE INDEX ix_telephone_organisation ON telephone (organisation_ref)
CREATE INDEX ix_telephone_contact ON telephone (Contact_Ref)
GO

-- E-mail addresses, and web sites under the types whose code begins with WWW.
CREATE TABLE email (
  email_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_email PRIMARY KEY,
  individual_ref int NULL CONSTRAINT fk_email_individual REFERENCES individual (individual_ref),
  organisation_ref int NULL
    CONSTRAINT fk_email_organisation REFERENCES organisation (organisation_ref),
  contact_ref int NULL CONSTRAINT fk_email_contact REFERENCES contact (contact_ref),
  type int NULL CONSTRAINT fk_email_type REFERENCES lookup (lookup_ref),
  email_address varchar(200) NULL,
  main_email char(1) NULL,
  comments varchar(max) NULL,
  valid_from datetime NULL,
  valid_to datetime NULL
)
CREATE INDEX ix_email_individual ON email (individual_ref)
CREATE INDEX ix_email_organisation ON email (organisation_ref)
CREATE INDEX ix_email_contact ON email (contact_ref)
CREATE INDEX ix_email_address ON email (email_address)
GO
