#pragma once

#include "sample/SampleClimate.h"
#include "sample/SampleLandform.h"
#include "sample/SampleRivers.h"
#include "sample/SampleTerrain.h"

/// Decides the ground of every land point: its exact height and its terrain code.
class SamplePainter {
  public:
    SamplePainter(std::uint64_t seed, const SampleLandform &landform, const SampleClimate &climate,
                  const SampleRivers &rivers);

    /// The world as it is, or, with `older`, as it was before the volcano's last eruption.
    SampleTerrain paint(bool older) const;

    /// Where the last eruption buried the land, as a centre and a radius in land points.
    SamplePoint eruption() const { return _eruption; }
    static constexpr float kEruptionRadius = 26;

  private:
    struct Site {
        float x, y;
        float height;   // above the sea
        float slope;    // rise a land point
        float hollow;   // above 0 where the ground lies below its surroundings
        float openness; // share of sea around
        float coast;    // as SampleLandform::coastAt
        float wetness;  // 0 to 1
        float warmth;   // 0 to 1, height taken into account
        float patch;    // noise of some 20 land points
        float speckle;  // noise of some 4 land points
    };

    void layGround(SampleGrid<float> &ground) const;
    SampleLand seaAt(int x, int y, float coast) const;
    SampleLand landAt(const Site &site, bool older) const;
    SampleLand volcanicAt(const Site &site, SampleLand usual, bool older) const;
    static SampleLand coldAt(const Site &site);
    static SampleLand rockAt(const Site &site);
    static SampleLand shoreAt(const Site &site);
    static SampleLand desertAt(const Site &site, float region);
    static SampleLand temperateAt(const Site &site, float region);
    bool isLake(float x, float y) const;

    const SampleLandform &_landform;
    const SampleClimate &_climate;
    const SampleRivers &_rivers;
    SampleNoise _patch, _speckle, _region;
    SampleGrid<float> _openness; // share of sea around, every 4 land points
    SamplePoint _eruption;
};
