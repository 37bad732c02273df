#pragma once

#include "sample/SampleErosion.h"
#include "sample/SampleGrid.h"
#include "sample/SampleNoise.h"
#include "sample/SamplePlan.h"

#include <cstdint>

/// The rough shape of the world, before it is brought to single land points: where land is, how
/// high it stands above the sea, and where water gathers.
///
/// Heights are in the unit of the land-height table; water is level with `surface`.
class SampleLandform {
  public:
    explicit SampleLandform(std::uint64_t seed);

    /// Above 0 on land, below 0 in the sea; about 0.1 a hundred land points from the coast.
    float coastAt(float x, float y) const;
    /// Whether a place lies so far out that only deep sea can be there.
    bool isOpenSea(float x, float y) const { return _coast.nearest(x, y) < -0.3f; }
    /// Height of the ground above the sea; meaningful on land.
    float heightAt(float x, float y) const;
    /// Where a place of the map lies in the grids below. The bend lends rivers and coasts the
    /// curves that eight directions of flow cannot.
    SamplePoint bent(float x, float y) const;

    const SampleGrid<float> &height() const { return _height; }
    const SampleGrid<std::uint8_t> &sea() const { return _sea; }
    const SampleFlow &flow() const { return _flow; }
    /// Depth of standing fresh water, 0 elsewhere.
    const SampleGrid<float> &lakeDepth() const { return _lakeDepth; }
    SamplePoint volcano() const { return _volcano; }

    static constexpr float kVolcanoRadius = 62;

  private:
    float continent(float x, float y) const;
    float mountains(float x, float y) const;
    void shapeCoast();
    void joinInlandSeas();
    void raiseLand();
    void placeVolcano(std::uint64_t seed);
    void raiseVolcano();
    void sinkLakes(std::uint64_t seed);
    void fillHollows();

    SampleNoise _shape, _detail, _bend;
    SamplePlan _plan;
    SamplePoint _volcano;
    SampleGrid<float> _coast;  // every 4 land points
    SampleGrid<float> _height; // every 2 land points, as the rest
    SampleGrid<std::uint8_t> _sea;
    SampleFlow _flow;
    SampleGrid<float> _lakeDepth;
};
