-- Continuing professional development: programmes, their periods, and what members did in them.
-- value is in the programme's unit (hours, points).

CREATE TABLE cpd_programme (
  programme_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_cpd_programme PRIMARY KEY,
  description varchar(100) NULL,
  unit int NULL CONSTRAINT fk_cpd_programme_unit REFERENCES lookup (lookup_ref)
)
CREATE TABLE cpd_grade (
  grade_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_cpd_grade PRIMARY KEY,
  grade_lookup_ref int NULL CONSTRAINT fk_cpd_grade_lookup REFERENCES lookup (lookup_ref)
)
CREATE TABLE cpd_period (
  period_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_cpd_period PRIMARY KEY,
  description varchar(100) NULL
)
CREATE TABLE cpd_course (
  course_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_cpd_course PRIMARY KEY,
  description varchar(200) NULL
)
-- What a course was chosen for: an objective of the member's plan.
CREATE TABLE cpd_object (
  object_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_cpd_object PRIMARY KEY,
  description varchar(200) NULL
)
GO

-- A member's enrolment in a programme.
CREATE TABLE ind_programme (
  ind_prog_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_ind_programme PRIMARY KEY,
  individual_ref int NULL
    CONSTRAINT fk_ind_programme_individual REFERENCES individual (individual_ref),
  programme_ref int NOT NULL
    CONSTRAINT fk_ind_programme_programme REFERENCES cpd_programme (programme_ref),
  value decimal(9,2) NULL,
  start_date datetime NULL,
  end_date datetime NULL,
  status int NULL CONSTRAINT fk_ind_programme_status REFERENCES lookup (lookup_ref),
  grade_ref int NULL CONSTRAINT fk_ind_programme_grade REFERENCES cpd_grade (grade_ref)
)
CREATE INDEX ix_ind_programme_individual ON ind_programme (individual_ref)
GO

CREATE TABLE ind_period (
  ind_period_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_ind_period PRIMARY KEY,
  ind_prog_ref int NOT NULL
    CONSTRAINT fk_ind_period_programme REFERENCES ind_programme (ind_prog_ref),
  period_ref int NOT NULL CONSTRAINT fk_ind_period_period REFERENCES cpd_period (period_ref),
  value decimal(9,2) NULL,
  start_date datetime NULL,
  end_date datetime NULL,
  grade_ref int NULL CONSTRAINT fk_ind_period_grade REFERENCES cpd_grade (grade_ref)
)
CREATE INDEX ix_ind_period_programme ON ind_period (ind_prog_ref)
GO

CREATE TABLE ind_cpd (
  ind_CPD_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_ind_cpd PRIMARY KEY,
  ind_period_ref int NOT NULL
    CONSTRAINT fk_ind_cpd_period REFERENCES ind_period (ind_period_ref),
  course_ref int NOT NULL CONSTRAINT fk_ind_cpd_course REFERENCES cpd_course (course_ref),
  value decimal(9,2) NULL,
  detail varchar(max) NULL,
  start_date datetime NULL,
  end_date datetime NULL
)
CREATE INDEX ix_ind_cpd_period ON ind_cpd (ind_period_ref)
GO

CREATE TABLE cpd_source (
  ind_cpd_ref int NOT NULL CONSTRAINT fk_cpd_source_ind_cpd REFERENCES ind_cpd (ind_CPD_ref),
  object_ref int NOT NULL CONSTRAINT fk_cpd_source_object REFERENCES cpd_object (object_ref),
  CONSTRAINT pk_cpd_source PRIMARY KEY (ind_cpd_ref, object_ref)
)
GO
