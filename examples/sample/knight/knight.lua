-- Reports the knight's animations and the frames that have no collision box.
local project = ...
if project == nil then
    print("no project")
    return
end
local animations = project:fileByType(3)
print("animations: " .. animations.count)
