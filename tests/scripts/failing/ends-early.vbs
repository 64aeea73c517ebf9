Sub Work
  Expect "one and one", 1 + 1, 2
  On Error Resume Next
  Err.Raise 5
End Sub
Work
