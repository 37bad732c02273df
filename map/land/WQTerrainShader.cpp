#include "map/land/WQTerrainShader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

// The loops below run once for each of four million points. The compiler makes one copy of them for
// each of these processors, all with the same operations in the same order. The copy is chosen
// before main, and before a sanitizer is ready for code that it instruments.
#if defined(__x86_64__) && !defined(PLOTTERRA_SANITIZED)
#define WQ_FOR_EACH_PROCESSOR __attribute__((target_clones("arch=x86-64-v4", "avx2", "default")))
#else
#define WQ_FOR_EACH_PROCESSOR
#endif

namespace {

constexpr unsigned kLast = kWQLandSize - 1;

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

/// A point as one word, and its flag for data in there.
std::uint32_t wordOfPoint(const WQLandPoint &point) {
    return std::bit_cast<std::uint32_t>(point);
}
constexpr auto kDataBit = std::bit_cast<std::uint32_t>(WQLandPoint{0, 0, WQLandPoint::hasData});

/// Turns n . L into shares of light, and finds the least and the greatest on land.
WQ_FOR_EACH_PROCESSOR
WQLightRange diffuseFactors(const WQLandPoint *__restrict points,
                            const float *__restrict dotProducts, float *__restrict factors) {
    constexpr std::size_t kLanes = 16;
    using Floats = float __attribute__((vector_size(4 * kLanes)));
    using Words = std::uint32_t __attribute__((vector_size(4 * kLanes)));
    constexpr Floats kInfinity = Floats{} + std::numeric_limits<float>::infinity();
    Floats minimum = kInfinity, maximum = -kInfinity;
    for (std::size_t next = 0; next < kWQLandSize; next += kLanes) {
        // The last columns are looked at together with some before them.
        const std::size_t x = std::min(next, kWQLandSize - kLanes);
        Words words;
        Floats dots;
        std::memcpy(&words, points + x, sizeof words);
        std::memcpy(&dots, dotProducts + x, sizeof dots);
        const auto isLand = (words & kDataBit) != 0;
        const Floats low = isLand ? dots : kInfinity, high = isLand ? dots : -kInfinity;
        minimum = low < minimum ? low : minimum;
        maximum = high > maximum ? high : maximum;
        // In single precision this is what WQDiffuseFactor gives: the sum is rounded once, and
        // halving is exact.
        const Floats shares = (dots + 1.0f) * 0.5f;
        const Floats clamped = shares > 0.0f ? shares : Floats{};
        std::memcpy(factors + x, &clamped, sizeof clamped);
    }
    WQLightRange range{}; // clang 16 loses a constructor that only such copies call
    for (std::size_t lane = 0; lane < kLanes; ++lane)
        if (minimum[lane] <= maximum[lane])
            range.include({WQDiffuseFactor(minimum[lane]), WQDiffuseFactor(maximum[lane])});
    return range;
}

/// WQShadedComponent for the components of each point at once. No product or factor is negative,
/// and no factor is not a number.
WQ_FOR_EACH_PROCESSOR
void colorPoints(const WQLandPoint *__restrict points, const float *__restrict factors,
                 const WQColorProduct *__restrict products, WQPixel emptyPixel,
                 WQPixel *__restrict pixels) {
    using Integers = std::int32_t __attribute__((vector_size(16)));
    using Bytes = std::uint8_t __attribute__((vector_size(16)));
    constexpr int kLowByte = std::endian::native == std::endian::little ? 0 : 3;
    for (std::size_t x = 0; x < kWQLandSize; ++x) {
        const WQColorProduct value = products[points[x].terrainWord & 0xFF] * factors[x] / 255.0f;
        const WQColorProduct clamped = value < 255.0f ? value : WQColorProduct{} + 255.0f;
        const Integers integers = __builtin_convertvector(clamped, Integers);
        const auto bytes = std::bit_cast<Bytes>(integers);
        const auto shaded = std::bit_cast<WQPixel>(__builtin_shufflevector(
            bytes, bytes, kLowByte, kLowByte + 4, kLowByte + 8, kLowByte + 12));
        pixels[x] = (wordOfPoint(points[x]) & kDataBit) != 0 ? shaded : emptyPixel;
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
        _emptyPixel = colors.shadedColor(kWQDeepSeaLandType, settings.fudgeFactor,
                                         static_cast<float>(WQFlatDiffuseFactor(settings.light)));
    for (unsigned byte = 0; byte < _products.size(); ++byte) {
        const unsigned landType = WQLandTypeOfTerrainWord(static_cast<std::uint16_t>(byte));
        // Infinity makes full red of terrain that does not exist, and full alpha of all, under any
        // light: even infinity times nothing, which is not a number, is clamped to 255.
        constexpr float kFull = std::numeric_limits<float>::infinity();
        _products[byte] = WQColorProduct{kFull, 0, 0, kFull};
        if (landType < kWQLandTypeCount) {
            const auto product = [&](std::uint8_t component) {
                const float value = component * settings.fudgeFactor;
                return value > 0 ? value : 0;
            };
            const WQPixel &color = colors[landType];
            _products[byte] = WQColorProduct{product(color.red), product(color.green),
                                             product(color.blue), kFull};
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
        const unsigned end = std::min(first + kStretch, kWQLandSize);
        std::uint32_t common = hasSouth && hasNorth ? kDataBit : 0;
        for (unsigned x = first; x < end; ++x)
            common &= wordOfPoint(row.points[x]) & wordOfPoint(south.points[x]) &
                      wordOfPoint(north.points[x]);
        for (unsigned x = first; x < end && common == 0; ++x)
            lightIfIncomplete(x);
        // The neighbours of a stretch's ends lie in other stretches.
        lightIfIncomplete(first);
        lightIfIncomplete(end - 1);
    }
}

WQLightRange WQTerrainShader::shadeRow(const WQLandWindow &window,
                                       std::span<WQPixel, kWQLandSize> pixels) const {
    Floats dotProducts, factors;
    dotProducts.front() = dotProducts.back() = 0; // never complete
    lightCompletePoints(window.south().elevations.data() + 1, window.center().elevations.data() + 1,
                        window.north().elevations.data() + 1, _settings.light, kWQLandSize - 2,
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

void WQTerrainShader::markChanges(const WQLandRow &row, std::span<WQPixel, kWQLandSize> pixels) {
    for (unsigned x = 0; x < kWQLandSize; ++x) {
        const WQLandPoint &point = row.points[x];
        if (point.has(WQLandPoint::wasChanged))
            pixels[x] = {0, 255, 0, 255};
        else if (point.has(WQLandPoint::wasAdded))
            pixels[x] = {0, 0, 255, 255};
        else if (point.has(WQLandPoint::wasRemoved))
            pixels[x] = {255, 0, 0, 255};
    }
}
