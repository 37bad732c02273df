#pragma once

/// A colour in sRGB, components from 0 to 1, alpha not multiplied in.
struct WQColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    friend bool operator==(const WQColor &, const WQColor &) = default;
};

/// The same in single precision, as a vector that can be loaded whole.
struct alignas(16) WQColorVector {
    float red = 0;
    float green = 0;
    float blue = 0;
    float alpha = 0;
};
