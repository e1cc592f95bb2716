-- The projects group: the work, the knight project, its files, sprites and palettes.

-- ParentProject
local parent = project.parent
assert(parent.isGame and parent.engine.path == "/engines/sample", "the work of the sample engine")
assert(parent.archive == project.archive, "the project lives in the work's archive")
local opened = parent:openedProjects()
assert(#opened == 1 and opened[1] == project, "one project is open")
-- The work's save writes every changed file in its place.
local animationList = project:fileByType(Project.FileType.Animations):asAnimations()
animationList:at(0):frameAt(0):delay(11)
assert(animationList.isModified, "a frame's delay changed")
parent:save()
assert(not animationList.isModified, "saved by the work's save")
local saved = project.archive:openFile(animationList.fileName, OpenMode.ReadOnly)
local text = saved:read(saved.size)
project.archive:closeFile(saved)
assert(text:find("frame (0, 0) delay=11", 1, true), "the change is in the file")
assert(parent:backup("first", progress), "a backup with a progress")
assert(parent:backup("second"), "a backup without")
local backups = parent.archive:entries(workDir .. "/backup", Filter.Files, SortFlag.Name)
assert(#backups == 2, "two backups: " .. table.concat(backups, " "))
assert(endsWith(backups[1], ".zip"), "with the plug-in, backups are zip files: " .. backups[1])
assert(parent:restoreBackup(backups[1], progress), "a backup comes back")
assert(parent:restoreBackup(backups[2]), "and again without a progress")

-- Project
assert(project.parent == parent, "the project's parent")
assert(project.type == 0 and project.typeName == "Sample project", "type " .. project.typeName)
assert(endsWith(project.fileName, "/knight/knight.ovp"), project.fileName)
assert(project.absolutePath == workDir .. "/knight/" and project.basePath == "knight/", project.absolutePath)
assert(project.name == "Knight" and project.version == "1.0", "name and version")
assert(not project.isEmpty and not project.isModified, "a full, unchanged project")
assert(#project:files() == 6 and #project:filesByType(Project.FileType.Sprites) == 1, "six files, one of sprites")
assert(Project.FileType.Main == 0 and Project.FileType.Sounds == 2 and Project.FileType.Scripts == 4, "file types")
assert(project:saveAll(), "saved in place")
assert(project:saveAll(project.archive, workDir .. "/elsewhere/", true), "saved as a copy")
assert(project.archive:fileExists(workDir .. "/elsewhere/knight/knight.oan"), "the copy has the animations")
fails(function() project:saveAll(nil, "x", true) end, "no overload")

-- ProjectFile and the four casts
local file = project:fileByType(Project.FileType.Sprites)
local sprites = file:asSprites()
assert(sprites ~= nil and sprites == file, "the sprite file is a Sprites")
assert(file:asSounds() == nil and file:asAnimations() == nil and file:asSourceCode() == nil, "and nothing else")
assert(project:fileByType(Project.FileType.Sounds):asSounds() ~= nil, "the sound bank is a Sounds")
assert(project:fileByType(Project.FileType.Scripts):asSourceCode() ~= nil, "the script is code")
assert(project:fileByType(5):asSprites() == nil, "a code document is no Sprites")
assert(file.project == project and file.archive == project.archive, "the file's project and archive")
assert(endsWith(file.fileName, "knight.osp") and file.fileExists, "the file on disk")
assert(not file.isReadOnly and not file.isModified and file.canSave, "writable, unchanged, the container saves")
assert(file:toFile(file.archive, workDir .. "/copy.osp"), "written elsewhere")
assert(file:toFile(file.archive, workDir .. "/copy2.osp", 1, progress), "written elsewhere as a foreign copy")
assert(file:fromFile(file.archive, file.fileName), "read again")
assert(file:fromFile(file.archive, file.fileName, 0, progress), "read again with a progress")
assert(sprites.count == 30, "30 sprites after reading")

-- Sprites and Sprite
assert(sprites.palettes.sprites == sprites, "the palettes belong to the sprites")
local spark = sprites:find(0, 1000 << 16)
local sprite = sprites:at(spark)
assert(sprite.parent == sprites and sprite.index == spark, "the sprite's place")
assert(sprite.imageProperties.format == 5 and not sprite.imageIsShared, "the spark: ARGB32 pixels of its own")
assert(sprites:at(sprites:find(0, 9000 << 16)).imageIsShared, "the shared sprite")
sprite:splitRGB()
assert(sprite.imageProperties.format == 3 and sprite.palette ~= nil, "split into an indexed image and a palette")
local first = sprites:at(0)
local size = first.imageProperties.size
assert(size.width == 48 and size.height == 64, "the first sprite's size")
local picture = first.image
first:crop()
assert(first.imageProperties.size.height < 64, "cropped")
first.image = picture
assert(first.imageProperties.size.height == 64, "the picture set back")
first:setImage(picture)
first:setImage(picture, true)
first:setImage(picture, true, Sprite.PaletteMode.Ignore, nil, ShareMode.NoShare)
assert(Sprite.PaletteMode.OwnPalette == 1 and Sprite.PaletteMode.AdaptImage == 2
       and Sprite.PaletteMode.SwapPalette == 3, "palette modes")
local palette = sprites.palettes:at(1)
first.palette = palette
assert(first.palette == palette, "the sprite's palette set")
local twin = first:duplicate()
assert(sprites.count == 31 and twin.index == 1, "a duplicate right behind")
local added = sprites:add({x = 77, y = 1}, picture, ShareMode.NoShare)
assert(sprites.count == 32 and added.index == 31, "a sprite added at the end")
assert(sprites:find(0, 77 * 65536 + 1) == 31, "its identifier, group 77 number 1, given as a point")
local id = added:propertyValue("Identifier")
assert(id.x == 77 and id.y == 1, "the identifier read back as a point")
local inserted = sprites:insert(2, 0, picture, ShareMode.Share)
assert(inserted.index == 2 and sprites:at(2) == inserted, "a sprite inserted")
fails(function() sprites:add(0, nil, ShareMode.NoShare) end, "Image")
fails(function() sprites:at("first") end, "integer")
sprites:remove(2)
assert(sprites.count == 32, "a sprite removed")
sprites.selected = 4
assert(sprites.selected == 4, "the selection")
assert(ShareMode.NoShare == 0 and ShareMode.Share == 1 and ShareMode.AskToShare == 2, "share modes")

-- Palettes and their colours
local palettes = sprites.palettes
local count = palettes.count
local palette = palettes:at(0)
assert(palette.parent == palettes and palette.index == 0, "the palette's place")
local colors = palette.colorTable
assert(#colors == 256, "a palette has 256 entries")
colors[2] = RGBA(1, 2, 3, 255)
palette:setColorTable(colors, ShareMode.NoShare)
assert(palette.colorTable[2] == RGBA(1, 2, 3, 255), "a colour changed")
fails(function() local many = {} for i = 1, 257 do many[i] = RGBA() end palette:setColorTable(many, 0) end,
      "at most 256")
fails(function() palette:setColorTable({1, 2, 3}, 0) end, "sequence")
local copy = palette:duplicate()
assert(palettes.count == count + 1 and copy ~= palette, "a duplicate palette")
local grey = {}
for i = 1, 16 do grey[i] = RGBA(i * 16 - 1, i * 16 - 1, i * 16 - 1, 255) end
local added = palettes:add(grey, 0, ShareMode.NoShare)
assert(#added.colorTable == 256 and added.colorTable[16] == RGBA(255, 255, 255, 255)
       and added.colorTable[17] == RGBA(), "a palette added, filled up to 256 with transparent black")
local inserted = palettes:insert(0, grey, 0, ShareMode.NoShare)
assert(palettes:at(0) == inserted, "a palette inserted first")
palettes:remove(0)
assert(palettes.count == count + 2, "a palette removed")
palettes:removeDuplicates()
assert(palettes.count < count + 2, "the duplicate palette went")
assert(palettes:find(0, 0) >= 0, "a palette found by its number")
palettes.selected = 1
assert(palettes.selected == 1, "the palette selection")
palettes:clearUnused()
assert(palettes.count <= count + 1, "unused palettes cleared")

-- ImageProperties: a value of its own
local properties = ImageProperties()
assert(properties.size.width == 0 and properties.size.height == 0 and properties.format == 3, "an empty one")

sprites:clear()
palettes:clear()
assert(sprites.count == 0 and palettes.count == 0, "all sprites and palettes cleared")

-- Last, as it may move the work elsewhere: a copy of the whole work.
local copy = workDir .. "-copy"
assert(parent:saveAs(copy, progress), "the work copied")
assert(parent.archive:fileExists(copy .. "/knight/knight.osp"), "the copy has the sprites")
assert(parent:saveAs(copy .. "2"), "copied without a progress")
