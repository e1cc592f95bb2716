-- The io group: string lists, devices opened through an archive, and the flags of
-- directory listings.

local archive = project.archive
local knight = workDir .. "/knight/"

-- An empty StringList stands for no name filters.
local names = archive:entries(knight, StringList(), Filter.Files, SortFlag.Name)
assert(#names == 6, "the knight's directory has six files, not " .. #names)
assert(names[1] == "knight.def" and names[6] == "knight.sbk", "sorted by name: " .. table.concat(names, " "))

-- Flags combine through their types or as plain integers, to the same value.
local files = Filters() | Filter.Files | Filter.NoSymLinks
assert(files == Filter.Files | Filter.NoSymLinks, "Filters combine with |")
local backwards = archive:entries(knight, files, SortFlags() | SortFlag.Name | SortFlag.Reversed)
assert(backwards[1] == "knight.sbk", "reversed order starts with the last name: " .. backwards[1])
local byType = archive:entries(knight, {"*.osp", "*.oan"}, Filter.Files, SortFlag.Name | SortFlag.IgnoreCase)
assert(#byType == 2 and byType[1] == "knight.oan", "name filters select two files")
local directories = table.concat(archive:entries(workDir, Filter.Dirs), " ")
assert(string.find(directories, "knight", 1, true), "the work has the knight's directory: " .. directories)
for _, flag in ipairs({Filter.AllEntries, Filter.AllDirs, Filter.CaseSensitive, Filter.NoFilter}) do
    assert(math.type(flag) == "integer", "every filter is an integer")
end
for _, flag in ipairs({SortFlag.Time, SortFlag.Size, SortFlag.DirsFirst, SortFlag.DirsLast, SortFlag.Type,
                       SortFlag.NoSort}) do
    assert(#archive:entries(knight, Filter.Files, flag) == 6, "every order lists the same files")
end

-- Reading a definition file through the device.
local device = archive:openFile(knight .. "knight.def", OpenMode.ReadOnly)
assert(device ~= nil and not device.isSequential and device.pos == 0, "a file, at 0")
local size = device.size
assert(device:read(12) == "# The knight" and device.pos == 12 and not device.atEnd, "reading moves the position")
assert(device:seek(size) and device.atEnd and device:read(10) == "", "nothing more to read at the end")
assert(device:reset() and device.pos == 0, "reset goes back to 0")
fails(function() device:read(-1) end, "negative")
fails(function() device:read("ten") end, "expected integer, got string")
archive:closeFile(device)

-- Writing a new file, then reading it back.
local notes = workDir .. "/notes.txt"
local out = archive:openFile(notes, OpenMode.WriteOnly)
assert(out:write("hello, knight") == 13, "a whole string written")
assert(out:write("abcdef", 3) == 3, "a part of a string written")
fails(function() out:write("abc", 4) end, "outside the data")
archive:closeFile(out)
local back = archive:openFile(notes, OpenMode.ReadWrite)
assert(back:read(100) == "hello, knightabc", "the file holds what was written")
archive:closeFile(back)
fails(function() archive:closeFile(nil) end, "File")
