-- The sample engine's own types: its file types, and sprites, palettes, sounds and frames
-- named by a group and a number.

-- SampleEngine
assert(SampleEngine.suffix(Project.FileType.Sprites) == "osp", "the sprites' suffix")
assert(SampleEngine.fileKey(SampleEngine.FileType.Definitions) == "definitions", "the definitions' key")
assert(SampleEngine.fileTypeOfSuffix("OAN") == 3 and SampleEngine.fileTypeOfKey("nothing") == -1, "types of names")
assert(SampleEngine.fileTypeName(Project.FileType.Sounds) == "Sound banks", "a type's name")
local size = project.parent.engine.gameSize
assert(size.width == 640 and size.height == 480, "the game's size")

-- ContainerSprite, ContainerPalette, SpriteContainer
local sprites = project:fileByType(Project.FileType.Sprites):asSprites()
local sprite = sprites:findSprite(40, 2)
assert(sprite.group == 40 and sprite.number == 2 and not sprite.isEmpty, "a sprite found by its identifier")
assert(not sprite.sharesPixels and sprites:findSprite(40, 99) == nil, "and none where there is none")
local copy = sprite:duplicate()
assert(sprite.sharesPixels and #sprite.sharingSprites == 1 and sprite.sharingSprites[1] == copy.index,
       "a duplicate shares the pixels")
copy:setIdentifier(41, 7)
assert(sprites:findSprite(41, 7) == copy and sprites.canUndo and not sprites.canRedo, "a new identifier")
sprites:undo()
assert(sprites:findSprite(41, 7) == nil and sprites.canRedo, "the identifier undone")
copy.group = 42
copy.number = 8
assert(sprites:findSprite(42, 8) == copy, "group and number set one by one")
fails(function() copy.number = 70000 end, "number 70000 outside 0 to 65535")
fails(function() copy:setIdentifier(-1, 0) end, "group -1 outside 0 to 65535")
local axis = sprite.axis
sprite.axis = {x = axis.x + 3, y = axis.y}
assert(sprite.axis.x == axis.x + 3 and sprite.axis.y == axis.y, "the axis moved")
local palette = sprites:findPalette(sprite.palette.group, sprite.palette.number)
assert(palette == sprite.palette, "the sprite's palette found by its identifier")
palette:setIdentifier(palette.group, 99)
assert(sprites:findPalette(palette.group, 99) == palette, "a palette's new identifier")

-- BankSound, SoundBank
local bank = project:fileByType(Project.FileType.Sounds):asSounds()
local count = bank.count
assert(bank:addFile(5, 5, BankSound.Codec.Wav, "not a sound") == nil and bank.count == count,
       "bytes that don't decode are no sound")
fails(function() bank:addFile(5, 5, 9, "") end, "codec 9 is none of BankSound.Codec")
assert(BankSound.Codec.Wav < BankSound.Codec.Ogg and BankSound.Codec.Ogg < BankSound.Codec.Flac, "the codecs")
local first = bank:at(0)
assert(bank:findSound(first.group, first.number) == first, "a sound found by its identifier")
assert(first.codec >= BankSound.Codec.Wav and first.byteCount > 44, "a sound's file")
first:setIdentifier(first.group, 99)
assert(bank:findSound(first.group, 99) == first and first.number == 99, "a sound's new identifier")

-- SampleAnimations, SampleAnimation, SampleFrame: each setter rewrites a line.
local animations = project:fileByType(Project.FileType.Animations):asAnimations()
local document = animations:at(0):frameAt(0).document
local original = wholeText(document)
local walk = animations:at(1)
assert(walk.identifier == "10" and walk.name == "Walk" and walk.loopPoint == 0, "the walk")
local frame = walk:frameAt(0)
assert(frame.spriteGroup == 10 and frame.spriteNumber == 0 and frame.isLoopPoint and frame.hasBoxes, "its frame")
frame:setSprite(11, 4)
frame = animations:at(1):frameAt(0)
assert(frame.spriteGroup == 11 and frame.spriteNumber == 4 and animations.isModified, "another sprite")
frame.identifier = "step"
assert(frame.identifier == "step" and string.find(wholeText(document), "id=step", 1, true), "the frame's name")
walk.name = "Stroll"
walk.identifier = "12"
assert(animations:at(1).displayName == "12 Stroll", "the animation renamed")
for _ = 1, 4 do animations:undo() end
assert(wholeText(document) == original, "every line back")
assert(animations:newIdentifier() == 1 and animations:optimize() == 0, "a free identifier; nothing to clean")
