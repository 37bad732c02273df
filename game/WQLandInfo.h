#pragma once

#include "io/ZPDataCursor.h"

/// A land type of the region record; its place in the list is the terrain type of land blocks.
///
///     string16       name, aligned
///     4 x u8         colour: blue, green, red, alpha
///     u32, n x u32   scenery that is placed automatically
class WQLandInfo {
  public:
    /// Components from 0 to 1.
    struct Color {
        double red = 0, green = 0, blue = 0, alpha = 0;
    };

    explicit WQLandInfo(ZPDataCursor &cursor);

    /// Not in the data: the place in the list.
    std::uint32_t identifier() const { return _identifier; }
    void setIdentifier(std::uint32_t identifier) { _identifier = identifier; }
    const std::string &name() const { return _name; }
    const Color &color() const { return _color; }
    const std::vector<std::uint32_t> &automaticTerrainObjectIndexes() const {
        return _automaticTerrainObjectIndexes;
    }

    void appendTextDataToString(std::string &text) const;

  private:
    std::uint32_t _identifier = 0;
    std::string _name;
    Color _color;
    std::vector<std::uint32_t> _automaticTerrainObjectIndexes;
};
