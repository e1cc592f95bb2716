-- The values group: values through their groups, frames, boxes, animations and the
-- blend record. Every edit is a text edit that the document's undo takes back.

-- GroupCode and ValueCode
local definitions = project:fileByType(5):asSourceCode()
local original = wholeText(definitions)
local character = definitions.root:childAt(0)
assert(character:subType() >= 0, "a group has a subtype")
assert(character:valueCount() == #character:values() and character:valueCount() > 10, "the character's values")
local name = character:valueAt(0)
assert(name.text == "name" and name.value == "Sir Bramble" and name.type == ValueCode.Type.String, "the name")
assert(character:values()[1] == name, "values() lists the same nodes")
local life = character:valueAt(3)
assert(life.text == "life" and life.value == 1000 and life.type == ValueCode.Type.Int, "the life")
life.value = 1200
assert(life.value == 1200, "a value stored in the node")
local added = character:addValue("motto", "Onwards")
assert(added.text == "motto" and added.value == "Onwards", "a value added")
assert(character:valueAt(character:valueCount() - 1) == added, "at the end")
local inserted = character:insertValue(1, "title", "Sir")
assert(character:valueAt(1) == inserted and inserted.value == "Sir", "a value inserted")
character:removeValueAt(0)
assert(character:valueAt(0) == inserted, "the name removed")
for _ = 1, 3 do definitions:undo() end
assert(wholeText(definitions) == original, "the values' edits undone")
local kinds = {ValueCode.Type.Unknown, ValueCode.Type.Bool, ValueCode.Type.File, ValueCode.Type.Date,
               ValueCode.Type.Keyword, ValueCode.Type.KeywordVector, ValueCode.Type.Float, ValueCode.Type.FloatVec2,
               ValueCode.Type.FloatVec3, ValueCode.Type.FloatVec4, ValueCode.Type.FloatVector,
               ValueCode.Type.IntVec2, ValueCode.Type.IntVec3, ValueCode.Type.IntVec4, ValueCode.Type.IntVector}
assert(#kinds == 15, "every value type is there")

-- Animations
local animations = project:fileByType(Project.FileType.Animations):asAnimations()
assert(animations.count == 8 and #animations.items == 8, "eight animations")
local idle = animations:at(0)
assert(animations:indexOf(idle) == 0 and animations.items[1] == idle, "the first is the idle")
assert(idle.text == "Idle" and idle.frameCount == 4 and #idle.frames == 4, "four frames of the idle")
animations.selected = 2
idle.selectedFrame = 3
assert(animations.selected == 2 and idle.selectedFrame == 3, "the animation and frame selections")

-- AnimationFrameCode: each member reads with no argument and writes with one.
local frame = idle:frameAt(0)
assert(idle:frameIndex(frame) == 0 and idle.frames[1] == frame, "the first frame")
local codeDocument = frame.document
local animationText = wholeText(codeDocument)
assert(frame:sprite() ~= nil and frame:sprite().index == 0, "the frame's sprite")
assert(frame:delay() == 8, "the delay")
frame:delay(5)
assert(idle:frameAt(0):delay() == 5, "the delay rewritten")
assert(string.find(wholeText(codeDocument), "frame (0, 0) delay=5", 1, true), "in the text")
codeDocument:undo()
assert(wholeText(codeDocument) == animationText, "the delay's edit undone exactly")
assert(frame:delay() == 8, "the delay back")
frame:offset({x = 3, y = -4})
assert(frame:offset().x == 3 and frame:offset().y == -4, "the offset in one step")
codeDocument:undo()
assert(frame:offsetX() == 0 and frame:offsetY() == 0, "one undo takes both back")
frame:offsetX(7)
frame:offsetY(-2)
assert(frame:offsetX() == 7 and frame:offsetY() == -2, "offsets one by one")
frame:scale({x = 2.0, y = 0.5})
assert(frame:scaleX() == 2.0 and frame:scaleY() == 0.5 and frame:scale().x == 2.0, "the scale")
frame:scaleX(1.5)
frame:scaleY(1.25)
assert(frame:scale().x == 1.5 and frame:scale().y == 1.25, "scales one by one")
frame:angle(90.0)
frame:flipFlags(AnimationFrameCode.Flip.Both)
assert(frame:angle() == 90.0 and frame:flipFlags() == 3, "turned, and flipped both ways")
assert(AnimationFrameCode.Flip.None == 0 and AnimationFrameCode.Flip.Horizontal == 1
       and AnimationFrameCode.Flip.Vertical == 2, "flips")
frame:blend(AnimationFrameBlend(AnimationFrameBlend.Mode.Addition, 0.25, 0.75))
assert(frame:blendMode() == AnimationFrameBlend.Mode.Addition, "the blend's mode")
assert(frame:blendSource() == 0.25 and frame:blendDestination() == 0.75, "the blend's factors")
frame:blendMode(AnimationFrameBlend.Mode.Opacity)
frame:blendSource(0.5)
frame:blendDestination(0.5)
local blend = frame:blend()
assert(blend.mode == AnimationFrameBlend.Mode.Opacity, "the mode through the record")
-- The record's second "source" is the destination factor.
assert(blend.source == frame:blendDestination(), "source names the destination")
for _ = 1, 16 do codeDocument:undo() end
assert(wholeText(codeDocument) == animationText, "all frame edits undone")

-- AnimationFrameBlend as a value of its own
local plain = AnimationFrameBlend()
assert(plain.mode == AnimationFrameBlend.Mode.None and plain.source == 0, "a default blend")
local made = AnimationFrameBlend(AnimationFrameBlend.Mode.Subtraction, 0.1, 0.9)
assert(made.source == 0.9, "the second source is the destination")
made.source = 0.3
made.mode = AnimationFrameBlend.Mode.Dodge
assert(made.source == 0.3 and made.mode == 5, "fields written")
assert(AnimationFrameBlend.Mode.Overlay == 3 and AnimationFrameBlend.Mode.HardLight == 4, "modes")

-- HitBoxes and HitBoxCode
local punch = nil
for i = 0, animations.count - 1 do
    if animations:at(i).text == "Punch" then punch = animations:at(i) end
end
local hit = punch:frameAt(2)
local attacks = hit:attackBoxes()
local bodies = hit:collisionBoxes()
assert(attacks.count == 1 and bodies.count == 1, "one box of each")
assert(attacks.parent == hit and attacks.boxType == HitBoxCode.Type.Attack, "the attack boxes")
assert(bodies.boxType == HitBoxCode.Type.Collision, "the collision boxes")
local box = attacks:at(0)
assert(box:boxType() == HitBoxCode.Type.Attack, "an attack box")
local r = box:rect()
assert(r.x == 17 and r.y == -41, "the box as written")
local punchText = wholeText(codeDocument)
box:rect({x = 20, y = -40, width = 6, height = 5})
assert(attacks:at(0):rect().x == 20 and attacks:at(0):rect().width == 6, "the box rewritten")
assert(string.find(wholeText(codeDocument), "attack (20, -40, 25, -36)", 1, true), "in the text")
codeDocument:undo()
assert(wholeText(codeDocument) == punchText, "the box's edit undone exactly")
bodies:add({x = 0, y = 0, width = 4, height = 4})
assert(bodies.count == 2, "a box added")
bodies:remove(0)
attacks:clear()
assert(bodies.count == 1 and attacks.count == 0, "a box removed, the attack boxes cleared")
for _ = 1, 3 do codeDocument:undo() end
assert(wholeText(codeDocument) == punchText, "the boxes back")

-- AnimationCode edits
local count = punch.frameCount
punch:addFrame()
assert(punch.frameCount == count + 1, "a frame added")
local early = punch:insertFrame(0)
assert(punch:frameAt(0) == early, "a frame inserted first")
punch:removeFrame(0)
assert(punch.frameCount == count + 1, "a frame removed")
local code = punch.code
assert(string.sub(code, 1, 21) == 'animation 200 "Punch"', "the animation's code")
punch.code = 'animation 200 "Jab"\n    frame (200, 0) delay=2'
local jab = nil
for i = 0, animations.count - 1 do
    if animations:at(i).text == "Jab" then jab = animations:at(i) end
end
assert(jab ~= nil and jab.frameCount == 1, "the animation's code replaced")
assert(string.find(wholeText(codeDocument), 'animation 200 "Jab"', 1, true), "in the text")

-- Animations edits
local added = animations:add("Crouch")
assert(animations.count == 9 and added.displayName == "Animation Crouch", "an animation added, named by its identifier")
local first = animations:insert(0, "Taunt")
assert(animations:at(0) == first, "an animation inserted")
local twin = animations:duplicate(0)
assert(animations.count == 11 and animations:indexOf(twin) == 1, "a duplicate behind it")
local named = animations:duplicate(0, "301")
assert(named ~= nil and named.displayName == "Animation 301", "a duplicate with an identifier of its own")
animations:remove(0)
assert(animations.count == 11, "an animation removed")
assert(idle:propertyValue("Identifier") ~= nil, "the animation's identifier")
