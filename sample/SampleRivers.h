#pragma once

#include "sample/SampleClimate.h"
#include "sample/SampleGrid.h"
#include "sample/SampleLandform.h"

#include <cstdint>
#include <vector>

/// The world's rivers, brought to single land points.
class SampleRivers {
  public:
    SampleRivers(const SampleLandform &landform, const SampleClimate &climate);

    bool isRiver(int x, int y) const { return _bed(x, y) < kDry; }
    /// Height of the water of a river point above the sea.
    float bed(int x, int y) const { return _bed(x, y); }
    /// Whether the water falls so steeply there that it foams.
    bool isRapid(int x, int y) const { return _rapid(x, y) != 0; }
    /// Water that passes a place of the map, in land points of rain; 0 in the sea.
    float dischargeAt(float x, float y) const { return _discharge.nearest(x, y); }

  private:
    struct Node {
        float x, y, bed, width;
        bool rapid;
    };

    void traceFrom(std::uint32_t source, const SampleLandform &landform,
                   std::vector<std::uint8_t> &traced);
    void draw(const std::vector<Node> &course);
    void stamp(const Node &node);

    static constexpr float kDry = 1e9f;

    SampleGrid<float> _discharge;
    SampleGrid<float> _bed;
    SampleGrid<std::uint8_t> _rapid;
};
