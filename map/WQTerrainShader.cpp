#include "map/WQTerrainShader.h"

#include <algorithm>

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

} // namespace

WQTerrainShader::WQTerrainShader(const WQLandGrid &grid, const WQLandColorTable &colors,
                                 const Settings &settings)
    : _grid(grid), _settings(settings) {
    if (!settings.usesAlpha)
        _emptyPixel = colors.shadedColor(WQDeepSeaLandType, settings.fudgeFactor,
                                         static_cast<float>(WQFlatDiffuseFactor(settings.light)));
    for (unsigned byte = 0; byte < _products.size(); ++byte) {
        const unsigned landType = WQLandTypeOfTerrainWord(static_cast<std::uint16_t>(byte));
        if (landType >= WQLandTypeCount)
            continue; // painted apart, in a colour without light
        const WQPixel &color = colors[landType];
        _products[byte] = {color.red * settings.fudgeFactor, color.green * settings.fudgeFactor,
                           color.blue * settings.fudgeFactor};
    }
}

ZPVector3 WQTerrainShader::calculateNormal(const WQLandGrid &landGrid, unsigned atX, unsigned y) {
    const unsigned x = atX;
    const float center = landGrid.elevation(landGrid.at(x, y));
    struct Neighbor {
        bool hasData;
        float rise;
    };
    const auto neighbor = [&](bool isInside, unsigned nx, unsigned ny) -> Neighbor {
        if (!isInside || !landGrid.at(nx, ny).has(WQLandPoint::hasData))
            return {false, 0};
        return {true, landGrid.elevation(landGrid.at(nx, ny)) - center};
    };
    const Neighbor west = neighbor(x > 0, x - 1, y), east = neighbor(x < kLast, x + 1, y);
    const Neighbor south = neighbor(y > 0, x, y - 1), north = neighbor(y < kLast, x, y + 1);

    ZPVector3 sum;
    const auto addTriangle = [&sum](const Neighbor &p, const Neighbor &q, float nx, float ny) {
        if (p.hasData && q.hasData)
            sum = {sum.x + nx, sum.y + ny, sum.z + 1};
    };
    addTriangle(west, south, west.rise, south.rise);
    addTriangle(west, north, west.rise, -north.rise);
    addTriangle(east, south, -east.rise, south.rise);
    addTriangle(east, north, -east.rise, -north.rise);
    return WQNormalizedVector(sum);
}

void WQTerrainShader::loadElevations(unsigned y, float *elevations) const {
    for (const WQLandPoint &point : _grid.row(y))
        *elevations++ = _grid.elevation(point);
}

/// Points at the edge of the data have fewer than four triangles.
void WQTerrainShader::lightIncompletePoints(unsigned y,
                                            std::span<float, WQLandSize> dotProducts) const {
    const auto row = _grid.row(y);
    const bool isOutermost = y == 0 || y == kLast;
    const auto south = _grid.row(y == 0 ? y : y - 1), north = _grid.row(y == kLast ? y : y + 1);
    for (unsigned x = 0; x <= kLast; ++x) {
        const bool isComplete = !isOutermost && x > 0 && x < kLast &&
                                (row[x - 1].flags & row[x + 1].flags & south[x].flags &
                                 north[x].flags & WQLandPoint::hasData) != 0;
        if (!isComplete && row[x].has(WQLandPoint::hasData))
            dotProducts[x] = WQDotProduct(calculateNormal(_grid, x, y), _settings.light);
    }
}

WQPixel WQTerrainShader::colorOfPoint(const WQLandPoint &point, float diffuseFactor) const {
    if (point.landType() >= WQLandTypeCount)
        return {255, 0, 0, 255};
    const auto &product = _products[point.terrainWord & 0xFF];
    return {WQShadedComponent(product[0], diffuseFactor),
            WQShadedComponent(product[1], diffuseFactor),
            WQShadedComponent(product[2], diffuseFactor), 255};
}

WQLightRange WQTerrainShader::shadeRow(unsigned y, std::span<WQPixel, WQLandSize> pixels) const {
    std::array<float, WQLandSize> south, center, north, dotProducts;
    loadElevations(y == 0 ? y : y - 1, south.data());
    loadElevations(y, center.data());
    loadElevations(y == kLast ? y : y + 1, north.data());
    lightCompletePoints(south.data() + 1, center.data() + 1, north.data() + 1, _settings.light,
                        WQLandSize - 2, dotProducts.data() + 1);
    lightIncompletePoints(y, dotProducts);

    const auto points = _grid.row(y);
    float minimum = std::numeric_limits<float>::infinity();
    float maximum = -minimum;
    for (unsigned x = 0; x < WQLandSize; ++x) {
        if (!points[x].has(WQLandPoint::hasData)) {
            pixels[x] = _emptyPixel;
            continue;
        }
        const float dot = dotProducts[x];
        minimum = dot < minimum ? dot : minimum;
        maximum = dot > maximum ? dot : maximum;
        pixels[x] = colorOfPoint(points[x], static_cast<float>(WQDiffuseFactor(dot)));
    }
    if (_settings.marksChanges)
        markChanges(points, pixels);

    WQLightRange range;
    if (minimum <= maximum)
        range = {WQDiffuseFactor(minimum), WQDiffuseFactor(maximum)};
    return range;
}

void WQTerrainShader::markChanges(std::span<const WQLandPoint, WQLandSize> points,
                                  std::span<WQPixel, WQLandSize> pixels) const {
    for (unsigned x = 0; x < WQLandSize; ++x) {
        if (points[x].has(WQLandPoint::wasChanged))
            pixels[x] = {0, 255, 0, 255};
        else if (points[x].has(WQLandPoint::wasAdded))
            pixels[x] = {0, 0, 255, 255};
        else if (points[x].has(WQLandPoint::wasRemoved))
            pixels[x] = {255, 0, 0, 255};
    }
}
