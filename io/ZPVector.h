#pragma once

struct ZPVector3 {
    float x = 0, y = 0, z = 0;
};

struct ZPVector4 {
    float x = 0, y = 0, z = 0, w = 0;
};

/// Real part last.
struct ZPQuaternion {
    float x = 0, y = 0, z = 0, w = 0;
};
