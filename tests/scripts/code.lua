-- The code group: cursors, code documents and nodes, on the knight's definitions.

local document = project:fileByType(5):asSourceCode()
assert(document ~= nil and document.canSave, "the definitions are code, and save themselves")
local original = wholeText(document)
assert(string.sub(original, 1, 12) == "# The knight", "the text as on disk")

-- CodeCursor
local cursor = document.cursor
cursor.position = 0
assert(cursor.atStart and cursor.atLineStart and cursor.position == 0, "the cursor at the start")
assert(cursor.lineNumber == 0 and cursor.columnNumber == 0, "on the first line")
assert(cursor:movePosition(CodeCursor.MoveOperation.EndOfLine), "to the end of the line")
assert(cursor.atLineEnd and not cursor.atLineStart, "at the end of the first line")
assert(cursor:movePosition(CodeCursor.MoveOperation.NextLine) and cursor.lineNumber == 1, "the next line")
assert(cursor:movePosition(CodeCursor.MoveOperation.PreviousLine, CodeCursor.MoveMode.MoveAnchor)
       and cursor.lineNumber == 0, "back up")
cursor:movePosition(CodeCursor.MoveOperation.StartOfLine)
assert(cursor:movePosition(CodeCursor.MoveOperation.NextCharacter, CodeCursor.MoveMode.KeepAnchor, 5), "five characters")
assert(cursor.selectedCode == "# The" and cursor.columnNumber == 5, "a selection of five")
cursor:clearSelection()
assert(cursor.selectedCode == "", "no selection left")
cursor:movePosition(CodeCursor.MoveOperation.NextWord)
cursor:select(CodeCursor.SelectionType.WordUnderCursor)
assert(cursor.selectedCode == "knight", "the word under the cursor: " .. cursor.selectedCode)
cursor:select(CodeCursor.SelectionType.LineUnderCursor)
assert(cursor.selectedCode == "# The knight: the numbers of the character and its moves.", cursor.selectedCode)
cursor:movePosition(CodeCursor.MoveOperation.PreviousWord)
cursor:movePosition(CodeCursor.MoveOperation.StartOfWord)
cursor:movePosition(CodeCursor.MoveOperation.EndOfWord)
cursor:movePosition(CodeCursor.MoveOperation.PreviousCharacter)
local standing = cursor.position
cursor:movePosition(CodeCursor.MoveOperation.NoMove)
assert(cursor.position == standing, "no move moves nothing")
cursor:movePosition(CodeCursor.MoveOperation.End)
assert(cursor.atEnd, "at the end")
cursor:movePosition(CodeCursor.MoveOperation.Start)
assert(cursor.atStart, "at the start again")
cursor.position = 2
cursor:movePosition(CodeCursor.MoveOperation.NextCharacter, CodeCursor.MoveMode.KeepAnchor, 3)
cursor:removeSelectedCode()
cursor:insertCode("Our")
assert(string.sub(wholeText(document), 1, 12) == "# Our knight", "a word replaced through the cursor")
document:undo()
document:undo()
assert(wholeText(document) == original, "both undone")
document:redo()
document:undo()
assert(wholeText(document) == original, "redone and undone")
fails(function() cursor:movePosition("End") end, "no overload")

-- CodeDocument
assert(document.codec == "US-ASCII" and document.title == "knight.def", "the codec and title as read")
document.codec = "UTF-8"
document.title = "Knight's numbers"
document.syntaxHighlight = false
assert(document.codec == "UTF-8" and document.title == "Knight's numbers" and not document.syntaxHighlight,
       "codec, title and highlighting set")
document.syntaxHighlight = true

-- CodeNode, ParentCode, NamedCode
local root = document.root
assert(root.type == CodeNode.Type.Root and root:childCount() == 4, "the root with four groups")
local character = root:childAt(0)
assert(character.type == CodeNode.Type.Group and character.document == document, "the first child is a group")
assert(character.displayName == "Character: knight" and character.text == "knight", "its names")
assert(root:childIndex(character) == 0 and character.parent == root, "child and parent")
assert(character.lineNo == 3 and character.firstLineNo == 3, "the header's line: " .. character.lineNo)
assert(character.lastLineNo > character.lineNo, "the group runs over its values")
assert(string.sub(character.code, 1, 19) == "[Character: knight]", "the group's code")
local first = character.next
-- A value's "type" is the type of its value, not of its node (CodeNode.Type.Value).
assert(first.type == ValueCode.Type.String and first.type ~= CodeNode.Type.Value, "the value's type")
assert(first.previous == character and first.parent == character, "the list in document order")
assert(character:select().selectedCode == "[Character: knight]\n", "the header line with its end")
assert(#character:selectAll().selectedCode == #character.code, "everything of the group")
assert(CodeNode.Type.Animation == 8 and CodeNode.Type.Frame == 16 and CodeNode.Type.HitBox == 32, "node types")
fails(function() root:childIndex(nil) end, "CodeNode")
assert(root:childAt(99) == nil, "no child there")

-- Renaming a group edits its header line, one undo step.
character.text = "squire"
assert(root:childAt(0).displayName == "Character: squire", "the group renamed")
assert(string.find(wholeText(document), "[Character: squire]", 1, true), "in the text")
document:undo()
assert(wholeText(document) == original, "the rename undone")

-- Inserting code around nodes and at the cursor.
local punch = root:childAt(1)
document:insertCodeBefore(punch, "[Move: kick]\n    animation = 210")
assert(root:childCount() == 5 and root:childAt(1).displayName == "Move: kick", "a group before the punch")
document:insertCodeAfter(root:childAt(1), "# kicks come after", true)
document:insertCodeBefore(root:childAt(1), "# a comment line", true)
document:insertCodeAfter(root:childAt(4), "[Move: block]")
assert(root:childCount() == 6, "a group at the end")
fails(function() document:insertCodeAfter(nil, "x") end, "no overload")
local at = document.cursor
at:movePosition(CodeCursor.MoveOperation.End)
document:insertCodeOnCursor("\n[Move: roll]", at)
assert(root:childCount() == 7, "a group at the cursor")
document:insertCode("\n[Move: dash]")
assert(root:childCount() == 8, "a group at the document's cursor")
punch:remove()
assert(root:childCount() == 7, "the punch removed")
root:childAt(1):remove(true)
for _ = 1, 8 do document:undo() end
assert(wholeText(document) == original, "every edit undone: " .. wholeText(document))

-- ProjectFile members through the document, and the whole text replaced.
document:beginChange()
document:insertCode("\n[Move: one]")
document:insertCode("\n[Move: two]")
document:endChange()
assert(root:childCount() == 6, "two groups in one change")
document:undo()
assert(wholeText(document) == original, "one change, one undo")
document:fromString("[Stage: moor]\n    floor = 10\n")
assert(root:childCount() == 1 and root:childAt(0).displayName == "Stage: moor", "the text replaced")
document:reset()
assert(root:childCount() == 0, "a reset document is empty")
