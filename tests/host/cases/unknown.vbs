CreateObject "nobody.knows"
