-- Moves every sprite of one group to another group, keeping their numbers, and points
-- the animation frames that showed them at their new place. Nothing is changed when a
-- sprite of the target group would be overwritten. The project is saved afterwards.
--
-- Run:  ovra run examples/scripts/movegroup.lua PROJECT -- FROM TO
-- e.g.  ovra run examples/scripts/movegroup.lua examples/sample -- 200 210

local usage = "usage: ovra run movegroup.lua PROJECT -- FROM TO"
if not project then error("no project given; " .. usage, 0) end
local from, to = math.tointeger(tonumber(arg[1])), math.tointeger(tonumber(arg[2]))
if #arg ~= 2 or not from or not to then error(usage, 0) end

local sprites = project:fileByType(Project.FileType.Sprites):asSprites()
if not sprites then error("the project has no sprites", 0) end

-- First look, then touch: the whole move is refused if any target is taken.
local moving = {}
for i = 0, sprites.count - 1 do
  local sprite = sprites:at(i)
  if sprite.group == from then
    if from ~= to and sprites:findSprite(to, sprite.number) then
      error(string.format("sprite %d,%d exists already; nothing moved", to, sprite.number), 0)
    end
    moving[#moving + 1] = i
  end
end
if #moving == 0 then
  print(string.format("no sprite in group %d", from))
  return
end

-- One undo step for all of them.
sprites:beginChange()
for _, index in ipairs(moving) do
  sprites:at(index).group = to
end
sprites:endChange()

-- Frames are lines of the animation file: editing one parses the file again, so each
-- frame is looked up anew rather than kept from an earlier pass.
local frames = 0
local animationsFile = project:fileByType(Project.FileType.Animations)
local animations = animationsFile and animationsFile:asAnimations()
if animations then
  for a = 0, animations.count - 1 do
    for f = 0, animations:at(a).frameCount - 1 do
      local frame = animations:at(a):frameAt(f)
      if frame.spriteGroup == from then
        frame:setSprite(to, frame.spriteNumber)
        frames = frames + 1
      end
    end
  end
end

-- Each changed file writes itself through its archive (the project's, for a list of
-- animations that shows a document), which replaces the file safely.
for _, file in ipairs(project:files()) do
  if file.isModified and not file:toFile(file.archive or project.archive, file.fileName) then
    error(file.fileName .. " could not be saved", 0)
  end
end
print(string.format("moved %d sprites from group %d to group %d; %d frames follow them",
                    #moving, from, to, frames))
