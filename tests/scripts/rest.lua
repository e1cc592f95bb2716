-- The rest group: archives, debuggers, the engine, progress, organizing, properties and
-- colours.

-- Archive.instance: the file system for a name no container serves, a zip for ".zip"
-- (the runner loads the plug-in, whose container serves "ZIP").
local disk = project.archive
assert(Archive.instance("a.txt", 1) == disk, "a name without a container's suffix gives the file system")
assert(Archive.instance(workDir .. "/notes", Archive.OpenFlags.ReadOnly) == disk, "so does a name without suffix")
local zip = Archive.instance(workDir .. "/a.zip", Archive.OpenFlags.ReadWrite)
assert(zip ~= nil and zip ~= disk, "a zip archive")
assert(Archive.OpenFlags.WriteOnly == 2, "open flags")
local out = zip:openFile("inside.txt", OpenMode.WriteOnly)
assert(out ~= nil and out:write("in the zip") == 10, "written into the zip")
zip:closeFile(out)
local kept = zip:openFile("kept.txt", OpenMode.WriteOnly)
kept:write("stays")
zip:closeFile(kept)
zip:flush()
assert(zip:fileExists("inside.txt") and not zip:fileExists("outside.txt"), "the entry is there")
assert(zip:renameFile("inside.txt", "moved.txt") and zip:fileExists("moved.txt"), "renamed")
assert(#zip:entries("", Filter.Files) >= 1, "listed")
assert(not zip.isReadOnly and zip:isWritable("moved.txt"), "writable")
assert(zip:removeFile("moved.txt") and not zip:fileExists("moved.txt"), "removed")
assert(type(zip.name) == "string" and type(zip.path) == "string", "a name and a path")
zip:flush()
zip:release()
assert(disk:fileExists(workDir .. "/a.zip"), "the zip file on disk")

-- The file system: names inside it.
local def = workDir .. "/knight/knight.def"
assert(disk:absoluteFileName(def) == def, "the complete name")
assert(disk:absoluteFilePath(def) == workDir .. "/knight", "the directory of the name: " .. disk:absoluteFilePath(def))
assert(disk:directoryExists(workDir .. "/knight") and not disk:directoryExists(workDir .. "/none"), "directories")
assert(disk:isWritable(def) and not disk.isReadOnly, "a writable disk")
disk:release() -- the file system outlives every holder
assert(disk:fileExists(def), "still there after a release")
fails(function() Archive.instance(nil, 1) end, "string")

-- Debugger, Emulator, Variable (the runner's own: the sample engine has none).
debugger.liveUpdateRate = 250
assert(debugger.liveUpdateRate == 250 and debugger:start("game", {"-fast", "-quiet"}), "started")
assert(not debugger:start("", {}), "nothing to start")
debugger:stepOver()
debugger:stepInto()
debugger:stepOut()
debugger:stepFrame()
debugger:interrupt()
debugger:resume()
debugger:stop()
local lives = debugger:variable("lives")
assert(lives.name == "lives" and lives.value == 3, "a variable")
lives.value = 4
assert(debugger:variable("lives").value == 4, "the variable set")
assert(debugger:variable("score") == nil, "no such variable")
assert(emulator:canRun(0) and not emulator:canRun(1), "modes")
assert(emulator:start(project) and not emulator:start(nil), "started on the project only")
emulator:stepFrame()
assert(emulator.frameEnded, "a frame ended")
emulator:stepOver()
assert(not emulator.frameEnded, "in the middle of a frame")
emulator:stepInto()
emulator:stepOut()
emulator:stop()
emulator.liveUpdateRate = 5
assert(emulator:variable("x") == nil and emulator.liveUpdateRate == 5, "through the base")
fails(function() debugger:frameEnded() end, "no member")

-- Progress
assert(progress.wasCancelled == false, "not cancelled")
progress:setMaximum(10)
progress:setValue(3)
progress:incrementValue()
progress:error("a bad frame")
local log = table.concat(callLog(), "|")
local expected = "start game -fast,-quiet|start  |stepOver|stepInto|stepOut|stepFrame|interrupt|resume|stop|"
    .. "emulator start Knight|emulator start nothing|emulator stop|setMaximum 10|setValue 3|incrementValue|"
    .. "error a bad frame"
assert(log == expected, "the calls in order: " .. log)

-- Engine
local engine = project.parent.engine
assert(engine.path == "/engines/sample", "the engine's place")
assert(engine:queryString(Engine.StringType.GameMarkFile, 0) == "game.ovg", "the game mark")
assert(engine:queryString(Engine.StringType.CommentMarker, 0) == "#", "the comment marker")
assert(engine:queryString(Engine.StringType.AnimationFilePattern, 0) == "*.oan", "the animation files")
assert(string.find(engine:singleFileFilters(), "*.osp", 1, true), "all filters")
assert(engine:singleFileFilters(Project.FileType.Sprites) ~= engine:singleFileFilters(), "the sprites' filter")
local fresh = engine:createFile(Project.FileType.Sprites, project)
assert(fresh:asSprites() ~= nil and fresh:asSprites().count == 0, "a new, empty sprite file")

-- Organizable
local sounds = project:fileByType(Project.FileType.Sounds):asSounds()
local firstSound = sounds:at(0)
assert(sounds:compare(0, 1) < 0 and sounds:compare(1, 0) > 0, "sounds in order")
sounds:move(0, 4)
assert(sounds:at(4) == firstSound, "moved to the end")
sounds:autoOrganize()
assert(sounds:at(0) == firstSound, "sorted back")
assert(firstSound.parent == sounds and firstSound.index == 0 and firstSound.duration > 0, "a sound")
assert(firstSound.identifier.x == 1, "its identifier")
sounds.selected = 2
assert(sounds.selected == 2 and sounds:find(0, 12345) == -1, "the selection; no sound of that identifier")
local copy = firstSound:duplicate()
assert(sounds.count == 6 and copy.index == 1, "a duplicate sound")
sounds:remove(1)
sounds:clear()
assert(sounds.count == 0, "sounds cleared")

-- PropertyItem
local frame = project:fileByType(Project.FileType.Animations):asAnimations():at(0):frameAt(0)
assert(frame:propertyCount() == 7 and frame:propertyName(2) == "Delay", "the frame's properties")
assert(frame:propertyValue("Delay") == 8, "a property read")
frame:setPropertyValue("Delay", 9)
assert(frame:delay() == 9, "a property written")
fails(function() frame:propertyName(7) end, "no property")

-- RGB and RGBA
-- Each field under two names: one field, not two.
local c = RGB(10, 20, 30)
assert(c.red == 10 and c.r == 10 and c.green == 20 and c.g == 20 and c.blue == 30 and c.b == 30, "RGB fields")
c.r = 11
assert(c.red == 11, "r is red")
assert(RGB().red == 0 and RGB(0x102030).green == 0x20 and RGB(c).red == 11, "RGB constructors")
assert(RGB(1, 2, 3) == RGB(1, 2, 3) and RGB(1, 2, 3) ~= RGB(1, 2, 4), "RGB compares by value")
local a = RGBA(1, 2, 3, 4)
a.a = 9
assert(a.alpha == 9 and a.r == 1 and a.red == 1 and a.g == 2 and a.green == 2 and a.b == 3 and a.blue == 3,
       "RGBA fields")
assert(RGBA().alpha == 0 and RGBA(0x80102030).alpha == 0x80 and RGBA(a).alpha == 9, "RGBA constructors")
local fromRgb = RGBA(RGB(5, 6, 7))
assert(fromRgb.red == 5 and fromRgb.blue == 7, "an RGBA of an RGB")
a:fromRGB(RGB(7, 8, 9))
assert(a.red == 7 and a.green == 8 and a.blue == 9, "fromRGB")
assert(a:toRGB() == RGB(7, 8, 9), "toRGB")
fails(function() RGB(256, 0, 0) end, "no constructor")
fails(function() RGBA(1, 2, 3, 4).red = "x" end, "integer")

-- Image: the knight's first sprite as a picture of the script's own, changed, saved and
-- read back.
local knight = project:fileByType(Project.FileType.Sprites):asSprites():at(0).image
assert(knight.format == Image.Format.Indexed8 and knight.colorCount > 1 and not knight.isNull, "an indexed sprite")
local index = knight:pixelIndex(24, 32)
assert(knight:pixel(24, 32) == index and knight:color(index) == knight:colorTable()[index + 1], "an index and its colour")
assert(knight:convertToFormat(Image.Format.ARGB32):pixel(24, 32) == knight:color(index), "the colour once converted")
local part = knight:copy(0, 0, 8, 4):scaled(16, 8)
part:setColorTable(knight:colorTable())
part:setColor(1, 0xFF102030)
part:fill(0)
part:setPixel(3, 2, 1)
local picture = workDir .. "/part.png"
part:save(picture)
local back = Image()
back:load(picture)
assert(back == part and Image.load(picture) == part and back:pixel(3, 2) == 1, "saved and read back")
assert(Image.Format.Invalid == 0 and Image.Format.RGB32 == 4 and Image.Format.ARGB32_Premultiplied == 6, "formats")
fails(function() knight:pixel(48, 0) end, "pixel (48, 0) outside the 48x64 image")
