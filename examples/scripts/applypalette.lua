-- Gives the indexed sprites of some groups one palette: their pixels keep their indices
-- and take the colours of the palette. The palette is one of the project's, named by
-- GROUP,NUMBER, or the colour table of an indexed picture file, which then joins the
-- project's palettes (or reuses an equal one). True-colour sprites are left as they
-- are and counted. The project is saved afterwards.
--
-- Run:  ovra run examples/scripts/applypalette.lua PROJECT -- PALETTE GROUP [GROUP...]
-- e.g.  ovra run examples/scripts/applypalette.lua examples/sample -- night.png 0 10
--       ovra run examples/scripts/applypalette.lua examples/sample -- 1,2 200

local usage = "usage: ovra run applypalette.lua PROJECT -- PALETTE GROUP [GROUP...]"
if not project then error("no project given; " .. usage, 0) end
if #arg < 2 then error(usage, 0) end

local groups = {}
for i = 2, #arg do
  local group = math.tointeger(tonumber(arg[i]))
  if not group then error("not a group number: " .. arg[i], 0) end
  groups[group] = true
end

local sprites = project:fileByType(Project.FileType.Sprites):asSprites()
if not sprites then error("the project has no sprites", 0) end
local palettes = sprites.palettes

local palette
local g, n = arg[1]:match("^(%d+),(%d+)$")
if g then
  palette = sprites:findPalette(tonumber(g), tonumber(n))
  if not palette then error("the project has no palette " .. arg[1], 0) end
else
  local picture = Image.load(arg[1])
  if picture.format ~= Image.Format.Indexed8 then
    error(arg[1] .. " is no indexed picture, so it has no palette", 0)
  end
  local colors = {}
  for i, color in ipairs(picture:colorTable()) do colors[i] = RGBA(color) end
  local before = palettes.count
  palette = palettes:add(colors, 0, ShareMode.Share)
  -- A new palette goes into a group of its own, after the highest one there is.
  if palettes.count > before then
    local highest = -1
    for i = 0, before - 1 do highest = math.max(highest, palettes:at(i).group) end
    palette:setIdentifier(highest + 1, 0)
  end
end

local changed, skipped = 0, 0
sprites:beginChange()
for i = 0, sprites.count - 1 do
  local sprite = sprites:at(i)
  if groups[sprite.group] then
    if sprite.palette then
      sprite.palette = palette
      changed = changed + 1
    else
      skipped = skipped + 1
    end
  end
end
sprites:endChange()

-- Each changed file writes itself through its archive (the project's, for a list of
-- animations that shows a document), which replaces the file safely.
for _, file in ipairs(project:files()) do
  if file.isModified and not file:toFile(file.archive or project.archive, file.fileName) then
    error(file.fileName .. " could not be saved", 0)
  end
end
print(string.format("palette %d,%d on %d sprites; %d true-colour sprites left as they were",
                    palette.group, palette.number, changed, skipped))
