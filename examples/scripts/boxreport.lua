-- Reports the animations whose frames lack contact boxes: frames without any box, or,
-- with KIND "body" or "attack", frames without a box of that kind. Changes nothing.
--
-- Run:  ovra run examples/scripts/boxreport.lua PROJECT [-- KIND]
-- e.g.  ovra run examples/scripts/boxreport.lua examples/sample -- body

local kind = arg[1] or "any"
if kind ~= "any" and kind ~= "body" and kind ~= "attack" then
  error("KIND is any, body or attack, not '" .. kind .. "'", 0)
end
if not project then error("no project given", 0) end
local file = project:fileByType(Project.FileType.Animations)
local animations = file and file:asAnimations()
if not animations then error("the project has no animations", 0) end

local function boxCount(boxes)
  return boxes and boxes.count or 0
end

local function lacks(frame)
  local body, attack = boxCount(frame:collisionBoxes()), boxCount(frame:attackBoxes())
  if kind == "body" then return body == 0 end
  if kind == "attack" then return attack == 0 end
  return body + attack == 0
end

local found = 0
for a = 0, animations.count - 1 do
  local animation = animations:at(a)
  local missing = {}
  for f = 0, animation.frameCount - 1 do
    if lacks(animation:frameAt(f)) then missing[#missing + 1] = tostring(f + 1) end
  end
  if #missing > 0 then
    found = found + 1
    print(string.format("%s \"%s\": frame%s %s of %d without %s", animation.identifier, animation.name,
                        #missing == 1 and "" or "s", table.concat(missing, ", "), animation.frameCount,
                        kind == "any" and "boxes" or kind .. " boxes"))
  end
end
print(string.format("%d of %d animations have frames without %s", found, animations.count,
                    kind == "any" and "boxes" or kind .. " boxes"))
