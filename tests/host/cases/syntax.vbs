Echo "never"

If Then
