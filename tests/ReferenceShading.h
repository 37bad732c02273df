#pragma once

#include "map/land/WQLandGrid.h"
#include "map/land/WQTerrainShader.h"

#include <array>
#include <cmath>

/// Light and colour of a point, from vectors and cross products and without any of the shader's
/// shortcuts.
struct ReferenceShading {
    using Vector = std::array<float, 3>;

    const WQLandGrid &grid;
    WQTerrainShader::Settings settings;

    static Vector cross(const Vector &a, const Vector &b) {
        return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
    }

    Vector position(int x, int y) const {
        const WQLandPoint &point = grid.at(static_cast<unsigned>(x), static_cast<unsigned>(y));
        return {static_cast<float>(x), static_cast<float>(y),
                static_cast<float>(grid.height(point) * (1.0 / 12.0))};
    }

    bool hasData(int x, int y) const {
        return x >= 0 && y >= 0 && x < int(kWQLandSize) && y < int(kWQLandSize) &&
               grid.at(unsigned(x), unsigned(y)).has(WQLandPoint::hasData);
    }

    double diffuse(int x, int y) const {
        const Vector p = position(x, y);
        // Each pair in the order in which its cross product points up.
        const int pairs[4][2][2] = {
            {{-1, 0}, {0, -1}}, {{0, 1}, {-1, 0}}, {{0, -1}, {1, 0}}, {{1, 0}, {0, 1}}};
        Vector n{};
        for (const auto &pair : pairs) {
            Vector edges[2];
            bool isWhole = true;
            for (int side = 0; side < 2; ++side) {
                const int nx = x + pair[side][0], ny = y + pair[side][1];
                isWhole = isWhole && hasData(nx, ny);
                if (isWhole)
                    for (std::size_t axis = 0; axis < 3; ++axis)
                        edges[side][axis] = position(nx, ny)[axis] - p[axis];
            }
            if (isWhole) {
                const Vector normal = cross(edges[0], edges[1]);
                for (std::size_t axis = 0; axis < 3; ++axis)
                    n[axis] += normal[axis];
            }
        }
        const float s = n[0] * n[0] + n[1] * n[1] + n[2] * n[2];
        float r = 1.0f / std::sqrt(s);
        r = r * (1.5f - 0.5f * s * r * r);
        const auto &light = settings.light;
        const float dot = n[0] * r * light.x + n[1] * r * light.y + n[2] * r * light.z;
        const double d = (static_cast<double>(dot) + 1.0) * 0.5;
        return d < 0 ? 0 : d;
    }

    WQPixel color(unsigned landType, double diffuse) const {
        if (landType > 32)
            return {255, 0, 0, 255};
        const WQPixel &base = WQLandColorTable::shared()[landType];
        const auto component = [&](std::uint8_t c) {
            const float v = c * settings.fudgeFactor * static_cast<float>(diffuse) / 255.0f;
            return static_cast<std::uint8_t>(v > 0 ? (v > 255 ? 255.0f : v) : 0.0f);
        };
        return {component(base.red), component(base.green), component(base.blue), 255};
    }

    WQPixel pixel(int x, int y) const {
        const WQLandPoint &point = grid.at(unsigned(x), unsigned(y));
        if (!point.has(WQLandPoint::hasData)) {
            if (settings.usesAlpha)
                return {};
            return color(kWQDeepSeaLandType, (double(settings.light.z) + 1.0) * 0.5);
        }
        if (settings.marksChanges && point.has(WQLandPoint::wasChanged))
            return {0, 255, 0, 255};
        if (settings.marksChanges && point.has(WQLandPoint::wasAdded))
            return {0, 0, 255, 255};
        if (settings.marksChanges && point.has(WQLandPoint::wasRemoved))
            return {255, 0, 0, 255};
        return color((point.terrainWord & 3) != 0 ? 32u : (point.terrainWord & 0xFFu) >> 2,
                     diffuse(x, y));
    }
};
