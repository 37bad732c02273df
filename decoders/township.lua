-- A town of the sample world: where it lies, what it is like, who trades there.

local sizes = { [0] = "hamlet", "village", "town", "city" }

local function decode(cursor, out)
  out:identifier(cursor:readLittleInt32())
  out:text("name", cursor:wq_readLength16StringAndAlign(true))
  out:number("east", cursor:readLittleFloat32())
  out:number("north", cursor:readLittleFloat32())

  -- One word of four parts: name, word, lowest bit, number of bits.
  local word = cursor:readLittleInt16()
  out:bits("size", word, 0, 2, sizes)
  out:bits("harbour", word, 2, 1)
  out:bits("terrain", word, 3, 5)
  out:bits("lamps", word, 8, 8)

  local count = cursor:wq_readPackedLittleInt30()
  out:list("traders", count, function()
    out:reference("trader", cursor:readLittleInt32())
  end)
  cursor:alignToFourByteBoundary()
end

return { name = "Township", types = { 0x40 }, decode = decode }
