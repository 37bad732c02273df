#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

/// The world is 255 land blocks of 8 cells a side, so 2041 land points.
inline constexpr int SampleBlocksPerSide = 255;
inline constexpr int SampleCellsPerBlock = 8;
inline constexpr int SamplePointsPerSide = SampleBlocksPerSide * SampleCellsPerBlock + 1;

/// A square field of values over the whole world, every `spacing` land points one; x runs east, y
/// runs north, and rows follow each other in memory.
template <class Value>
class SampleGrid {
  public:
    explicit SampleGrid(int spacing, Value fill = {})
        : _spacing(spacing), _side((SamplePointsPerSide - 1) / spacing + 1),
          _values(static_cast<std::size_t>(_side) * static_cast<std::size_t>(_side), fill) {}

    int spacing() const { return _spacing; }
    int side() const { return _side; }
    std::size_t size() const { return _values.size(); }

    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(_side) +
               static_cast<std::size_t>(x);
    }
    bool contains(int x, int y) const { return x >= 0 && y >= 0 && x < _side && y < _side; }

    Value &operator()(int x, int y) { return _values[index(x, y)]; }
    const Value &operator()(int x, int y) const { return _values[index(x, y)]; }
    Value &operator[](std::size_t i) { return _values[i]; }
    const Value &operator[](std::size_t i) const { return _values[i]; }

    /// The value of the grid point nearest to a place given in land points.
    const Value &nearest(float x, float y) const {
        return (*this)(clamped(x / scale() + 0.5f), clamped(y / scale() + 0.5f));
    }

    /// Linear interpolation at a place given in land points; the border extends outward.
    float linear(float x, float y) const {
        const float gx = std::clamp(x / scale(), 0.0f, static_cast<float>(_side - 1));
        const float gy = std::clamp(y / scale(), 0.0f, static_cast<float>(_side - 1));
        const int x0 = std::min(static_cast<int>(gx), _side - 2);
        const int y0 = std::min(static_cast<int>(gy), _side - 2);
        const float fx = gx - static_cast<float>(x0), fy = gy - static_cast<float>(y0);
        const auto *p = &(*this)(x0, y0);
        const float south = p[0] + (p[1] - p[0]) * fx;
        const float north = p[_side] + (p[_side + 1] - p[_side]) * fx;
        return south + (north - south) * fy;
    }

    /// Cubic interpolation (Catmull-Rom); smooth enough for slopes to be taken from it.
    float cubic(float x, float y) const {
        const float gx = std::clamp(x / scale(), 1.0f, static_cast<float>(_side) - 2.01f);
        const float gy = std::clamp(y / scale(), 1.0f, static_cast<float>(_side) - 2.01f);
        const int x0 = static_cast<int>(gx), y0 = static_cast<int>(gy);
        const float fx = gx - static_cast<float>(x0), fy = gy - static_cast<float>(y0);
        float rows[4];
        for (int j = 0; j < 4; ++j) {
            const auto *p = &(*this)(x0 - 1, y0 - 1 + j);
            rows[j] = spline(p[0], p[1], p[2], p[3], fx);
        }
        return spline(rows[0], rows[1], rows[2], rows[3], fy);
    }

  private:
    float scale() const { return static_cast<float>(_spacing); }
    int clamped(float g) const { return std::clamp(static_cast<int>(g), 0, _side - 1); }
    static float spline(float a, float b, float c, float d, float t) {
        return b + 0.5f * t * (c - a + t * (2 * a - 5 * b + 4 * c - d + t * (3 * (b - c) + d - a)));
    }

    int _spacing;
    int _side;
    std::vector<Value> _values;
};
