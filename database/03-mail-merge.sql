-- Mail merge: the fields that may stand in a message, and who may use them.

-- merge_sql gives the field's value for one member; '[/MEM]' in it stands for the member_ref.
CREATE TABLE web_mailmerge (
  web_mailmerge_ref int IDENTITY(1,1) NOT NULL CONSTRAINT pk_web_mailmerge PRIMARY KEY,
  merge_field varchar(50) NOT NULL CONSTRAINT uq_web_mailmerge_field UNIQUE,
  merge_description varchar(100) NULL,
  merge_sql varchar(max) NULL
)
GO

CREATE TABLE web_mailmerge_permission (
  web_mailmerge_ref int NOT NULL
    CONSTRAINT fk_mailmerge_permission REFERENCES web_mailmerge (web_mailmerge_ref),
  web_mailmerge_group_ref int NOT NULL,
  CONSTRAINT pk_web_mailmerge_permission
    PRIMARY KEY (web_mailmerge_group_ref, web_mailmerge_ref)
)
GO
