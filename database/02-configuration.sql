-- What the site's administrators configure: texts, settings and name templates.

-- The text shown for a label of an area of pages, in one set of texts (a language, a site).
-- '[/BLANK]' shows nothing; no row, null or an empty text shows the page's own default.
-- No unique key: while labels are on display, pages register missing labels by themselves, and two
-- of them may do so at once. The second row does no harm; a refusal would break that page.
CREATE TABLE web_text (
  web_text_area varchar(50) NOT NULL,
  web_text_label varchar(100) NOT NULL,
  text_id int NOT NULL CONSTRAINT df_web_text_text_id DEFAULT 1,
  web_text varchar(max) NULL
)
CREATE INDEX ix_web_text ON web_text (web_text_area, web_text_label, text_id)
GO

-- One setting per key. Switches hold 'true' or 'false', or 1 or 0 where a number is read.
CREATE TABLE web_config (
  global_config varchar(100) NOT NULL CONSTRAINT pk_web_config PRIMARY KEY,
  setting varchar(255) NULL
)
GO

-- Templates of composed names: section 'LabelName', entry 'Salutation', 'KnownAs' or 'Label'.
CREATE TABLE app_profile (
  section varchar(50) NOT NULL,
  entry varchar(50) NOT NULL,
  value varchar(255) NULL,
  CONSTRAINT pk_app_profile PRIMARY KEY (section, entry)
)
GO
