-- A trader of the sample world. docs/decoders.md tells how this one came about.

local habits = { [0] = "buys", "repairs", "trades at night", [4] = "is on the road" }

local function decode(cursor, out)
  out:identifier(cursor:readLittleInt32())
  out:text("name", cursor:wq_readLengthVar30StringAndAlign(true))
  out:flags("habits", cursor:readLittleInt32(), habits)
  out:reference("township", cursor:readLittleInt32())

  local count = cursor:readLittleInt16()
  out:groups("wares", count, function()
    out:reference("image", cursor:readLittleInt32())
    out:number("price", cursor:readLittleInt32())
    out:signed("stock", cursor:readLittleInt16(), 16)
  end)
  out:text("greeting", cursor:wq_readLengthVar30UTF16StringAndAlign(true))
end

return { name = "Trader", types = { 0x41 }, decode = decode }
