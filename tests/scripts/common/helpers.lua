-- What every script of the suite uses; the runner runs this first.

-- The call must fail with a Lua error of the binding that contains `pattern`.
function fails(call, pattern)
    local ok, message = pcall(call)
    assert(not ok, "the call should have failed: " .. pattern)
    assert(string.find(message, pattern, 1, true), "unexpected error: " .. tostring(message))
    assert(string.find(message, "lua: error: ", 1, true) == 1, "errors start with the prefix: " .. message)
end

-- The whole text of a code document, through a cursor.
function wholeText(document)
    local cursor = document.cursor
    cursor:select(CodeCursor.SelectionType.Document)
    return cursor.selectedCode
end

function endsWith(text, tail)
    return string.sub(text, -#tail) == tail
end
