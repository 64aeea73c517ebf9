-- What the fuzz target has beside the members' database of the T-SQL cases: all types, views over
-- views, procedures, keys that point at their own table.
CREATE TABLE every_type (
  id bigint IDENTITY(-5,3) NOT NULL,
  a_bit bit NULL,
  a_tiny tinyint NULL,
  a_small smallint NULL,
  an_int int NULL DEFAULT 42,
  a_big bigint NULL,
  a_decimal decimal(18,4) NULL,
  a_money money NULL,
  a_smallmoney smallmoney NULL,
  a_float float NULL,
  a_real real NULL,
  a_datetime datetime NULL,
  a_smalldatetime smalldatetime NULL,
  a_date date NULL,
  a_char char(5) NULL,
  a_varchar varchar(20) NULL DEFAULT 'none',
  a_text text NULL,
  an_nchar nchar(5) NULL,
  an_nvarchar nvarchar(20) NULL,
  an_ntext ntext NULL,
  a_max varchar(max) NULL,
  a_guid uniqueidentifier NULL,
  CONSTRAINT pk_every PRIMARY KEY (id),
  CONSTRAINT uq_every UNIQUE (a_char, an_int),
  CONSTRAINT ck_every CHECK (a_tiny < 200 OR a_varchar LIKE '%x%')
)
CREATE TABLE tree (
  node int NOT NULL PRIMARY KEY,
  parent int NULL REFERENCES tree (node),
  name nvarchar(10) NOT NULL DEFAULT N'leaf'
)
CREATE TABLE [odd name] ([a b] int NULL, [select] varchar(8) NULL, ["] float NULL)
CREATE UNIQUE INDEX ix_odd ON [odd name] ([a b])
CREATE INDEX ix_tree ON tree (parent, name)
GO
INSERT INTO every_type (a_bit, a_tiny, a_small, an_int, a_big, a_decimal, a_money, a_smallmoney, a_float, a_real, a_datetime, a_smalldatetime, a_date, a_char, a_varchar, a_text, an_nchar, an_nvarchar, an_ntext, a_max, a_guid)
VALUES (1, 199, 32767, 2147483647, '9223372036854775807', 12345.6789, 922337.5807, 214748.3647, 1.5e300, 0.1, '99991231 23:59:59.997', '20790606 23:59', '00010101', 'abc', 'x y', 'long', N'é', N'Ωmega', N'ntext', 'max', '6F9619FF-8B86-D011-B42D-00C04FC964FF')
INSERT INTO every_type (a_bit, a_tiny, a_small, an_int, a_big, a_decimal, a_money, a_smallmoney, a_float, a_real, a_datetime, a_smalldatetime, a_date, a_char, a_varchar, a_text, an_nchar, an_nvarchar, an_ntext, a_max, a_guid)
VALUES (0, 0, -32768, -2147483648, '-9223372036854775808', -0.0001, -1, 0, -0.0, -1e30, '17530101', '19000101', '20040229', '', '', '', N'', N'', N'', '', '00000000-0000-0000-0000-000000000000')
INSERT INTO every_type (a_bit) VALUES (NULL)
INSERT INTO tree VALUES (1, NULL, N'root'), (2, 1, DEFAULT), (3, 1, N'B'), (4, 3, N'b ')
INSERT INTO [odd name] VALUES (1, 'x', 0.5), (2, NULL, NULL)
GO
CREATE VIEW members_view AS
SELECT m.member_ref, m.member_no, m.fee, i.surname, left(i.forenames, 1) + '.' AS initial
FROM member m LEFT JOIN individual i ON i.individual_ref = m.individual_ref
GO
CREATE VIEW grades_view AS
SELECT v.*, l.lookup_full_desc AS grade
FROM members_view v, member m LEFT JOIN lookup l ON l.lookup_ref = m.grade_ref
WHERE v.member_ref = m.member_ref
GO
CREATE PROCEDURE usp_member @ref int, @no varchar(12) = NULL OUTPUT AS
SET NOCOUNT ON
SELECT @no = member_no FROM member WHERE member_ref = @ref
IF @no IS NULL RETURN 1
SELECT member_no, fee FROM member WHERE member_ref = @ref
RETURN 0
GO
CREATE PROCEDURE usp_add_node @parent int, @name nvarchar(10) = N'new', @node int OUTPUT AS
SELECT @node = max(node) + 1 FROM tree
INSERT INTO tree (node, parent, name) VALUES (@node, @parent, @name)
IF @@ERROR <> 0 RETURN -1
EXEC usp_member 1000
