#pragma once

#include "io/ZPVector.h"

#include <cmath>

/// 1 / sqrt(s) in single precision, refined by one Newton step. Both parts are fixed to the bit by
/// IEEE 754, so that every machine lights the land alike.
inline float WQReciprocalSquareRoot(float s) {
    const float r = 1.0f / std::sqrt(s);
    return r * (1.5f - 0.5f * s * r * r);
}

inline float WQDotProduct(ZPVector3 a, ZPVector3 b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// A zero vector gives non-numbers.
inline ZPVector3 WQNormalizedVector(ZPVector3 v) {
    const float r = WQReciprocalSquareRoot(WQDotProduct(v, v));
    return {v.x * r, v.y * r, v.z * r};
}

/// The share of light on a surface, from the dot product of its normal and the light vector. The
/// light wraps around: a slope turned away from it still gets some.
inline double WQDiffuseFactor(float dotProduct) {
    const double factor = (static_cast<double>(dotProduct) + 1.0) * 0.5;
    return factor < 0 ? 0 : factor;
}

/// The share of light on flat ground.
inline double WQFlatDiffuseFactor(ZPVector3 light) {
    return WQDiffuseFactor(WQDotProduct(light, {0, 0, 1}));
}
