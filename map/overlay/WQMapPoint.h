#pragma once

#include "game/WQMapCoordinate.h"

#include <string>

/// A place to mark on the map.
class WQMapPoint {
  public:
    /// An empty label is replaced by the coordinate's text.
    WQMapPoint(std::string type, WQMapLocation coordinate, std::string label)
        : _type(std::move(type)), _coordinate(coordinate),
          _label(label.empty() ? WQStringFromMapCoordinate(coordinate) : std::move(label)) {}

    /// Carried with the point; every marker is drawn the same way.
    const std::string &type() const { return _type; }
    WQMapLocation coordinate() const { return _coordinate; }
    const std::string &label() const { return _label; }

  private:
    std::string _type;
    WQMapLocation _coordinate;
    std::string _label;
};
