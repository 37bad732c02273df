-- What is told of the towns of the sample world, year by year.

local weathers = { [0] = "clear", "cloudy", "rain", "storm", "ash fall" }

local function decode(cursor, out)
  out:identifier(cursor:readLittleInt32())
  local count = cursor:readByte()
  out:groups("entries", count, function()
    out:number("year", cursor:readBigInt16())
    local byte = cursor:readByte()
    out:bits("month", byte, 0, 4)
    out:bits("weather", byte, 4, 4, weathers)
    local towns = cursor:readByte()
    out:list("townships", towns, function()
      out:reference("township", cursor:readLittleInt32())
    end)
    out:text("event", cursor:wq_readLength16StringAndAlign(true))
  end)
end

return { name = "Chronicle", types = { 0x42 }, decode = decode }
