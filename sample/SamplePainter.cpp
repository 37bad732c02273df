#include "sample/SamplePainter.h"

#include "sample/SampleParallel.h"
#include "sample/SampleRandom.h"
#include "sample/SampleSmooth.h"

#include <cmath>

namespace {

constexpr float kOpenSeaFloor = -1000;

} // namespace

SamplePainter::SamplePainter(std::uint64_t seed, const SampleLandform &landform,
                             const SampleClimate &climate, const SampleRivers &rivers)
    : _landform(landform), _climate(climate), _rivers(rivers), _patch(SampleHash(seed, 20)),
      _speckle(SampleHash(seed, 21)), _region(SampleHash(seed, 22)), _openness(4) {
    for (int y = 0; y < _openness.side(); ++y)
        for (int x = 0; x < _openness.side(); ++x)
            _openness(x, y) = landform.sea()(2 * x, 2 * y);
    SampleSmooth(_openness, 11, 11);

    const SamplePoint volcano = landform.volcano();
    _eruption = {volcano.x - 14, volcano.y + 16};
}

bool SamplePainter::isLake(float x, float y) const {
    const SamplePoint p = _landform.bent(x, y);
    return _landform.lakeDepth().linear(p.x, p.y) > 0.4f;
}

/// Heights above the sea for land, below 0 for its floor.
void SamplePainter::layGround(SampleGrid<float> &ground) const {
    SampleForEachLine(ground.side(), [&](int y) {
        for (int x = 0; x < ground.side(); ++x) {
            const float px = static_cast<float>(x), py = static_cast<float>(y);
            if (_landform.isOpenSea(px, py)) {
                ground(x, y) = kOpenSeaFloor;
                continue;
            }
            const float coast = _landform.coastAt(px, py);
            const float grain = _speckle.layered(px / 3.3f, py / 3.3f, 2);
            if (coast <= 0) {
                ground(x, y) = std::min(-0.1f, 130 * coast + 0.7f * grain);
                continue;
            }
            const float height = std::max(0.0f, _landform.heightAt(px, py));
            if (isLake(px, py))
                ground(x, y) = height;
            else if (_rivers.isRiver(x, y))
                ground(x, y) = std::max(0.1f, std::min(height, _rivers.bed(x, y)) - 1.5f);
            else
                ground(x, y) = std::max(0.2f, height + 1.2f +
                                                  grain * (0.8f + std::min(9.0f, 0.022f * height)));
        }
    });
}

SampleTerrain SamplePainter::paint(bool older) const {
    SampleGrid<float> ground(1);
    layGround(ground);
    SampleTerrain terrain;
    const float seaLevel = SampleLandHeights()[SampleSeaLevelIndex];
    SampleForEachLine(ground.side(), [&](int y) {
        const int south = std::max(y - 1, 0), north = std::min(y + 1, ground.side() - 1);
        for (int x = 0; x < ground.side(); ++x) {
            const int west = std::max(x - 1, 0), east = std::min(x + 1, ground.side() - 1);
            const float px = static_cast<float>(x), py = static_cast<float>(y);
            const float height = ground(x, y);
            terrain.height(x, y) = SampleHeightIndex(std::max(0.0f, seaLevel + height + 0.5f));
            SampleLand &land = terrain.land(x, y);
            if (height < 0) {
                land = height == kOpenSeaFloor ? SampleLand::deepSea
                                               : seaAt(x, y, _landform.coastAt(px, py));
                if (land == SampleLand::deepSea)
                    terrain.height(x, y) = 0;
                continue;
            }
            if (isLake(px, py)) {
                land = SampleLand::freshStandingWater;
                continue;
            }
            if (_rivers.isRiver(x, y)) {
                land =
                    _rivers.isRapid(x, y) ? SampleLand::fauxRunningWater : SampleLand::runningWater;
                continue;
            }
            const float dx = (ground(east, y) - ground(west, y)) / 2;
            const float dy = (ground(x, north) - ground(x, south)) / 2;
            const SamplePoint p = _landform.bent(px, py);
            const float around = 0.25f * (_landform.height().linear(p.x - 12, p.y) +
                                          _landform.height().linear(p.x + 12, p.y) +
                                          _landform.height().linear(p.x, p.y - 12) +
                                          _landform.height().linear(p.x, p.y + 12));
            Site site = {};
            site.x = px;
            site.y = py;
            site.height = height;
            site.slope = std::sqrt(dx * dx + dy * dy) / 12;
            site.hollow = around - height;
            site.coast = _landform.coastAt(px, py);
            site.openness = _openness.linear(px, py);
            site.patch = _patch.layered(px / 26, py / 26, 3);
            site.speckle = _speckle.at(px / 2.3f + 91, py / 2.3f);
            site.wetness = _climate.wetnessAt(px, py) + 0.06f * site.patch + 0.03f * site.speckle;
            site.warmth = _climate.warmthAt(px, py) - 0.00085f * height + 0.02f * site.patch +
                          0.012f * site.speckle;
            land = landAt(site, older);
        }
    });
    return terrain;
}

SampleLand SamplePainter::seaAt(int x, int y, float coast) const {
    const float px = static_cast<float>(x), py = static_cast<float>(y);
    const float shelf = 0.075f + 0.05f * _region.layered(px / 120, py / 120, 4);
    if (coast < -shelf)
        return SampleLand::deepSea;
    const float open = _openness.linear(px, py) + 0.06f * _patch.layered(px / 26, py / 26, 2);
    if (open < 0.30f && _climate.wetnessAt(px, py) > 0.5f && _climate.warmthAt(px, py) > 0.45f)
        return SampleLand::seaSlime;
    return open < 0.42f ? SampleLand::shallowStillSea : SampleLand::shallowSea;
}

SampleLand SamplePainter::landAt(const Site &site, bool older) const {
    const float region = _region.layered(site.x / 90, site.y / 90, 3);
    const SampleLand usual = [&] {
        if (site.warmth < 0.20f)
            return coldAt(site);
        if (site.slope > 0.95f + 0.3f * site.speckle || site.height > 330 + 90 * site.patch)
            return rockAt(site);
        if (site.openness > 0.04f && site.coast < 0.008f + 0.010f * (1 + site.patch) &&
            site.height < 14)
            return shoreAt(site);
        if (site.wetness < 0.30f && site.warmth > 0.42f)
            return desertAt(site, region);
        return temperateAt(site, region);
    }();
    return volcanicAt(site, usual, older);
}

SampleLand SamplePainter::coldAt(const Site &site) {
    if (site.slope > 1.5f + 0.4f * site.speckle)
        return SampleLand::barrenRock;
    if (site.warmth > 0.185f && site.slope < 0.5f)
        return site.speckle + 1.5f * site.patch > 0.1f ? SampleLand::semiBarrenRock
                                                       : SampleLand::snow;
    if (site.hollow > 16 && site.height > 60)
        return SampleLand::blueIce;
    if (site.height < 45 && site.patch > 0.05f)
        return SampleLand::ice;
    return SampleLand::snow;
}

SampleLand SamplePainter::rockAt(const Site &site) {
    if (site.wetness < 0.30f)
        return site.patch > 0 ? SampleLand::sedimentaryRock : SampleLand::barrenRock;
    return site.height + 120 * site.patch < 190 ? SampleLand::semiBarrenRock
                                                : SampleLand::barrenRock;
}

SampleLand SamplePainter::shoreAt(const Site &site) {
    if (site.slope > 0.5f)
        return SampleLand::rockStrewnSand;
    if (site.wetness > 0.66f && site.patch > 0.1f && site.warmth > 0.4f)
        return SampleLand::mudRichDirt;
    return site.warmth > 0.42f ? SampleLand::yellowSand : SampleLand::greySand;
}

SampleLand SamplePainter::desertAt(const Site &site, float region) {
    if (site.wetness > 0.26f)
        return site.speckle > 0 ? SampleLand::patchyDirt : SampleLand::packedDirt;
    if (site.slope > 0.45f || site.height > 190)
        return site.patch > 0.1f ? SampleLand::rockStrewnSand : SampleLand::sedimentaryRock;
    if (region > 0.22f)
        return SampleLand::argila;
    if (region < -0.30f)
        return SampleLand::desolateLands;
    return site.patch > 0.38f ? SampleLand::rockStrewnSand : SampleLand::yellowSand;
}

SampleLand SamplePainter::temperateAt(const Site &site, float region) {
    const bool flat = site.slope < 0.16f;
    if (site.warmth < 0.27f) {
        if (site.wetness > 0.5f && region > 0.05f)
            return site.speckle > -0.1f ? SampleLand::moss : SampleLand::darkMoss;
        return site.patch > 0.1f ? SampleLand::semiBarrenRock : SampleLand::grassland;
    }
    if (site.wetness > 0.60f && flat && site.height < 20 && site.hollow > -1.5f && region > 0.10f)
        return site.patch > 0.42f ? SampleLand::mudRichDirt : SampleLand::marshSparseSwamp;
    if (region > 0.46f && site.wetness > 0.4f)
        return site.speckle > 0.3f ? SampleLand::moss : SampleLand::darkMoss;
    if (region < -0.50f && site.wetness < 0.5f)
        return SampleLand::vorrik;
    if (site.height > 230 || site.slope > 0.75f)
        return site.patch > 0 ? SampleLand::semiBarrenRock : SampleLand::grassland;
    if (site.wetness + 0.35f * site.patch > 0.63f)
        return SampleLand::forestFloor;
    if (site.wetness > 0.48f)
        return site.patch > 0.22f ? SampleLand::patchyGrassland : SampleLand::lushGrass;
    if (site.wetness > 0.38f)
        return site.patch > 0.30f ? SampleLand::patchyGrassland : SampleLand::grassland;
    return site.patch > 0.15f ? SampleLand::patchyDirt : SampleLand::grassland;
}

/// Ash and lava around the volcano; an older world lacks what the last eruption laid down.
SampleLand SamplePainter::volcanicAt(const Site &site, SampleLand usual, bool older) const {
    const float ragged = 9 * site.patch + 3 * site.speckle;
    if (!older && SampleDistance({site.x, site.y}, _eruption) < kEruptionRadius - 8 + 1.5f * ragged)
        return site.hollow > 2 || site.patch > 0.2f ? SampleLand::volcano1
                                                    : SampleLand::obsidianPlain;
    const float d = SampleDistance({site.x, site.y}, _landform.volcano()) + ragged;
    if (d < 12)
        return SampleLand::volcano1;
    if (d < 24)
        return site.speckle > 0 ? SampleLand::volcano1 : SampleLand::volcano2;
    if (d < 44)
        return site.patch > 0.15f ? SampleLand::obsidianPlain : SampleLand::volcano2;
    return d < 66 ? SampleLand::desolateLands : usual;
}
