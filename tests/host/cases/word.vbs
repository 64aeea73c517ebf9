Dim word, document
Set word = CreateObject("Word.Application")
word.TemplateBookmarks = "Name|CPDStatement"
word.Visible = False
Set document = word.Documents.Add("letter.dot")
Print document.Bookmarks.Exists("name"), document.Bookmarks.Exists("nam")
document.Bookmarks("Name").Range.Text = "José"
document.Protect 2, , ""
word.FailAt = "SaveAs"
On Error Resume Next
document.SaveAs "a.doc"
Print Err.Number, Err.Source, Err.Description
On Error GoTo 0
word.Quit
Set document = Nothing
Set word = Nothing
Set word = CreateObject("Word.Application")
Print word.Recording
word.Recording = ""
Print "[" & word.Recording & "]"
