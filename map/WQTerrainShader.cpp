#include "map/WQTerrainShader.h"

#include <algorithm>
#include <limits>

// The loops below run once for each of four million points. The compiler makes one copy of them for
// each of these processors, all with the same operations in the same order.
#if defined(__x86_64__) && !defined(__SANITIZE_ADDRESS__)
#define WQ_FOR_EACH_PROCESSOR __attribute__((target_clones("arch=x86-64-v4", "avx2", "default")))
#else
#define WQ_FOR_EACH_PROCESSOR
#endif

namespace {

constexpr unsigned kLast = WQLandSize - 1;

/// n . L for points whose four neighbours all have data; `count` points, elevations and results of
/// which the first belongs to the same column. With the differences to the neighbours
///
///     a = west - P    b = south - P    c = north - P    d = east - P
///
/// the four triangles have the normals (a, b, 1), (a, -c, 1), (-d, b, 1) and (-d, -c, 1).
WQ_FOR_EACH_PROCESSOR
void lightCompletePoints(const float *__restrict south, const float *__restrict row,
                         const float *__restrict north, ZPVector3 light, std::size_t count,
                         float *__restrict dotProducts) {
    for (std::size_t x = 0; x < count; ++x) {
        const float center = row[x];
        const float a = row[std::ptrdiff_t(x) - 1] - center;
        const float b = south[x] - center;
        const float c = north[x] - center;
        const float d = row[x + 1] - center;
        const float nx = a + a - d - d;
        const float ny = b - c + b - c;
        const float nz = 4.0f;
        const float s = nx * nx + ny * ny + nz * nz;
        const float root = 1.0f / __builtin_sqrtf(s);
        const float r = root * (1.5f - 0.5f * s * root * root);
        dotProducts[x] = nx * r * light.x + ny * r * light.y + nz * r * light.z;
    }
}

/// Turns n . L into shares of light, and finds the least and the greatest on land. The range is
/// kept for several columns apart, so that they need not wait for one another.
WQ_FOR_EACH_PROCESSOR
WQLightRange diffuseFactors(const WQLandPoint *__restrict points,
                            const float *__restrict dotProducts, float *__restrict factors) {
    constexpr std::size_t kLanes = 16;
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    std::array<float, kLanes> minimum, maximum;
    minimum.fill(kInfinity);
    maximum.fill(-kInfinity);
    const auto include = [&](std::size_t x, std::size_t lane) {
        const float dot = dotProducts[x];
        const bool isLand = (points[x].flags & WQLandPoint::hasData) != 0;
        const float low = isLand ? dot : kInfinity, high = isLand ? dot : -kInfinity;
        minimum[lane] = low < minimum[lane] ? low : minimum[lane];
        maximum[lane] = high > maximum[lane] ? high : maximum[lane];
        // In single precision this is what WQDiffuseFactor gives: the sum is rounded once, and
        // halving is exact.
        const float factor = (dot + 1.0f) * 0.5f;
        factors[x] = factor > 0.0f ? factor : 0.0f;
    };
    std::size_t x = 0;
    for (; x + kLanes <= WQLandSize; x += kLanes)
        for (std::size_t lane = 0; lane < kLanes; ++lane)
            include(x + lane, lane);
    for (; x < WQLandSize; ++x)
        include(x, 0);

    const float least = *std::ranges::min_element(minimum);
    const float greatest = *std::ranges::max_element(maximum);
    WQLightRange range;
    if (least <= greatest)
        range = {WQDiffuseFactor(least), WQDiffuseFactor(greatest)};
    return range;
}

/// WQShadedComponent for the components of each point at once. No product or factor is negative,
/// and no factor is not a number.
template <class Components>
void colorPoints(const WQLandPoint *__restrict points, const float *__restrict factors,
                 const Components *__restrict products, WQPixel emptyPixel,
                 WQPixel *__restrict pixels) {
    using Integers = std::int32_t __attribute__((vector_size(16)));
    using Bytes = std::uint8_t __attribute__((vector_size(4)));
    for (std::size_t x = 0; x < WQLandSize; ++x) {
        const float d = factors[x];
        const Components value =
            products[points[x].terrainWord & 0xFF] * Components{d, d, d, d} / 255.0f;
        const Components clamped = value < 255.0f ? value : Components{} + 255.0f;
        const Integers integers = __builtin_convertvector(clamped, Integers);
        const auto bytes = __builtin_convertvector(integers, Bytes);
        const WQPixel shaded = {bytes[0], bytes[1], bytes[2], 255};
        pixels[x] = (points[x].flags & WQLandPoint::hasData) != 0 ? shaded : emptyPixel;
    }
}

/// How far a neighbour with data lies above the point.
struct Neighbor {
    bool hasData = false;
    float rise = 0;
};

ZPVector3 normalOfPoint(Neighbor west, Neighbor east, Neighbor south, Neighbor north) {
    ZPVector3 sum;
    const auto addTriangle = [&sum](Neighbor p, Neighbor q, float x, float y) {
        if (p.hasData && q.hasData)
            sum = {sum.x + x, sum.y + y, sum.z + 1};
    };
    addTriangle(west, south, west.rise, south.rise);
    addTriangle(west, north, west.rise, -north.rise);
    addTriangle(east, south, -east.rise, south.rise);
    addTriangle(east, north, -east.rise, -north.rise);
    return WQNormalizedVector(sum);
}

} // namespace

WQTerrainShader::WQTerrainShader(const WQLandColorTable &colors, const Settings &settings)
    : _settings(settings) {
    if (!settings.usesAlpha)
        _emptyPixel = colors.shadedColor(WQDeepSeaLandType, settings.fudgeFactor,
                                         static_cast<float>(WQFlatDiffuseFactor(settings.light)));
    for (unsigned byte = 0; byte < _products.size(); ++byte) {
        const unsigned landType = WQLandTypeOfTerrainWord(static_cast<std::uint16_t>(byte));
        // Terrain that does not exist is pure red under any light, even none: infinity times
        // nothing is not a number, which clamping also takes for full red.
        _products[byte] = Components{std::numeric_limits<float>::infinity(), 0, 0, 0};
        if (landType < WQLandTypeCount) {
            const auto product = [&](std::uint8_t component) {
                const float value = component * settings.fudgeFactor;
                return value > 0 ? value : 0;
            };
            const WQPixel &color = colors[landType];
            _products[byte] =
                Components{product(color.red), product(color.green), product(color.blue), 0};
        }
    }
}

ZPVector3 WQTerrainShader::calculateNormal(const WQLandGrid &landGrid, unsigned atX, unsigned y) {
    const float center = landGrid.elevation(landGrid.at(atX, y));
    const auto neighbor = [&](bool isInside, unsigned nx, unsigned ny) -> Neighbor {
        if (!isInside || !landGrid.at(nx, ny).has(WQLandPoint::hasData))
            return {};
        return {true, landGrid.elevation(landGrid.at(nx, ny)) - center};
    };
    return normalOfPoint(neighbor(atX > 0, atX - 1, y), neighbor(atX < kLast, atX + 1, y),
                         neighbor(y > 0, atX, y - 1), neighbor(y < kLast, atX, y + 1));
}

/// Points at the edge of the data have fewer than four triangles. They are rare, so the row is
/// searched for them by stretches.
void WQTerrainShader::lightIncompletePoints(const WQLandWindow &window, Floats &dotProducts) const {
    const WQLandRow &south = window.south(), &row = window.center(), &north = window.north();
    const bool hasSouth = window.y() > 0, hasNorth = window.y() < kLast;
    const auto lightIfIncomplete = [&](unsigned x) {
        const auto neighbor = [&](bool isInside, const WQLandRow &from, unsigned nx) -> Neighbor {
            if (!isInside || !from.points[nx].has(WQLandPoint::hasData))
                return {};
            return {true, from.elevations[nx] - row.elevations[x]};
        };
        if (!row.points[x].has(WQLandPoint::hasData))
            return;
        const Neighbor west = neighbor(x > 0, row, x - 1), east = neighbor(x < kLast, row, x + 1),
                       below = neighbor(hasSouth, south, x), above = neighbor(hasNorth, north, x);
        if (!west.hasData || !east.hasData || !below.hasData || !above.hasData)
            dotProducts[x] = WQDotProduct(normalOfPoint(west, east, below, above), _settings.light);
    };
    constexpr unsigned kStretch = 64;
    for (unsigned first = 0; first <= kLast; first += kStretch) {
        const unsigned end = std::min(first + kStretch, WQLandSize);
        unsigned flags = hasSouth && hasNorth ? WQLandPoint::hasData : 0;
        for (unsigned x = first; x < end; ++x)
            flags &= static_cast<unsigned>(row.points[x].flags & south.points[x].flags &
                                           north.points[x].flags);
        for (unsigned x = first; x < end && flags == 0; ++x)
            lightIfIncomplete(x);
        // The neighbours of a stretch's ends lie in other stretches.
        lightIfIncomplete(first);
        lightIfIncomplete(end - 1);
    }
}

WQLightRange WQTerrainShader::shadeRow(const WQLandWindow &window,
                                       std::span<WQPixel, WQLandSize> pixels) const {
    Floats dotProducts, factors;
    dotProducts.front() = dotProducts.back() = 0; // never complete
    lightCompletePoints(window.south().elevations.data() + 1, window.center().elevations.data() + 1,
                        window.north().elevations.data() + 1, _settings.light, WQLandSize - 2,
                        dotProducts.data() + 1);
    lightIncompletePoints(window, dotProducts);
    const WQLandRow &row = window.center();
    const WQLightRange range =
        diffuseFactors(row.points.data(), dotProducts.data(), factors.data());
    colorPoints(row.points.data(), factors.data(), _products.data(), _emptyPixel, pixels.data());
    if (_settings.marksChanges)
        markChanges(row, pixels);
    return range;
}

void WQTerrainShader::markChanges(const WQLandRow &row, std::span<WQPixel, WQLandSize> pixels) {
    for (unsigned x = 0; x < WQLandSize; ++x) {
        const WQLandPoint &point = row.points[x];
        if (point.has(WQLandPoint::wasChanged))
            pixels[x] = {0, 255, 0, 255};
        else if (point.has(WQLandPoint::wasAdded))
            pixels[x] = {0, 0, 255, 255};
        else if (point.has(WQLandPoint::wasRemoved))
            pixels[x] = {255, 0, 0, 255};
    }
}
