-- Sample CPD programmes: person 1 has completed one and follows another, person 6 has begun,
-- person 13 has put his off.

SET IDENTITY_INSERT cpd_programme ON
INSERT INTO cpd_programme (programme_ref, description, unit) VALUES
  (1, 'Annual CPD', 121),
  (2, 'Diploma in Preservation Management', 122)
SET IDENTITY_INSERT cpd_programme OFF

SET IDENTITY_INSERT cpd_grade ON
INSERT INTO cpd_grade (grade_ref, grade_lookup_ref) VALUES
  (1, 111),
  (2, 112),
  (3, 113)
SET IDENTITY_INSERT cpd_grade OFF

SET IDENTITY_INSERT cpd_period ON
INSERT INTO cpd_period (period_ref, description) VALUES
  (1, 'First half-year'),
  (2, 'Second half-year'),
  (3, 'Year one'),
  (4, 'Year two')
SET IDENTITY_INSERT cpd_period OFF

SET IDENTITY_INSERT cpd_course ON
INSERT INTO cpd_course (course_ref, description) VALUES
  (1, 'Paper chemistry'),
  (2, 'Handling of bound volumes'),
  (3, 'Disaster planning for small archives'),
  (4, 'Copyright & access'),
  (5, 'Own reading'),
  (6, 'Conference attendance')
SET IDENTITY_INSERT cpd_course OFF

SET IDENTITY_INSERT cpd_object ON
INSERT INTO cpd_object (object_ref, description) VALUES
  (1, 'Keep up with materials science'),
  (2, 'Prepare for a post with staff')
SET IDENTITY_INSERT cpd_object OFF
GO

SET IDENTITY_INSERT ind_programme ON
INSERT INTO ind_programme (ind_prog_ref, individual_ref, programme_ref, value, start_date, end_date,
  status, grade_ref) VALUES
  (1, 1, 1, 30.00, '20230101', '20231231', 102, 2),
  (2, 1, 2, 120.00, '20240901', '20260831', 101, NULL),
  (3, 6, 1, 30.00, '20250101', '20251231', 101, NULL),
  (4, 13, 1, 30.00, '20250101', NULL, 103, NULL)
SET IDENTITY_INSERT ind_programme OFF

SET IDENTITY_INSERT ind_period ON
INSERT INTO ind_period (ind_period_ref, ind_prog_ref, period_ref, value, start_date, end_date,
  grade_ref) VALUES
  (1, 1, 1, 14.50, '20230101', '20230630', 1),
  (2, 1, 2, 17.00, '20230701', '20231231', 3),
  (3, 2, 3, 60.00, '20240901', '20250831', 2),
  (4, 3, 1, 6.00, '20250101', '20250630', NULL)
SET IDENTITY_INSERT ind_period OFF

SET IDENTITY_INSERT ind_cpd ON
INSERT INTO ind_cpd (ind_CPD_ref, ind_period_ref, course_ref, value, detail, start_date,
  end_date) VALUES
  (1, 1, 1, 7.50, 'Two-day course; pH, lignin and foxing', '20230214', '20230215'),
  (2, 1, 5, 7.00, NULL, '20230301', '20230531'),
  (3, 2, 3, 12.00, 'Wrote the plan of our own searchroom', '20230911', '20230913'),
  (4, 2, 6, 5.00, 'Annual conference', '20231103', '20231104'),
  (5, 3, 2, 40.00, 'Assessed on twelve volumes', '20241014', '20250314'),
  (6, 3, 4, 20.00, NULL, '20250401', '20250630'),
  (7, 4, 1, 6.00, 'First day only', '20250218', '20250218')
SET IDENTITY_INSERT ind_cpd OFF

INSERT INTO cpd_source (ind_cpd_ref, object_ref) VALUES
  (1, 1),
  (3, 2),
  (5, 1)
GO
