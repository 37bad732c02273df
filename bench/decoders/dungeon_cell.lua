-- The dungeon cells of the sample world, 720,000 in the one of full size: what scripts/bench decodes.

local function decode(cursor, out)
  out:identifier(cursor:readLittleInt32())
  out:flags("flags", cursor:readLittleInt32(), { [1] = "has things" })
  out:reference("cell", cursor:readLittleInt32())
  local surfaces, portals = cursor:readByte(), cursor:readByte()
  local visible = cursor:readLittleInt16()
  out:list("surfaces", surfaces, function() out:number("", cursor:readLittleInt16()) end)
  out:number("environment", cursor:readLittleInt16())
  out:number("structure", cursor:readLittleInt16())
  out:vector("place", cursor:readLittleVector3())
  out:vector("turn", cursor:readLittleQuaternion())
  out:bytes("portals", cursor:readDataWithLength(portals * 8))
  out:bytes("visible", cursor:readDataWithLength(visible * 2))
  out:groups("things", cursor:readLittleInt32(), function()
    out:reference("model", cursor:readLittleInt32())
    out:vector("place", cursor:readLittleVector3())
    out:vector("turn", cursor:readLittleQuaternion())
  end)
end

return { name = "DungeonCell", classes = { "WQDungeonBlock" }, decode = decode }
