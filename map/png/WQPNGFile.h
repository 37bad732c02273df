#pragma once

#include "io/ZPError.h"
#include "map/png/WQImage.h"

#include <filesystem>

/// Writes an image as a PNG file without ancillary chunks: colour type 6 or 0, 8 bits a sample. The
/// file appears when it is whole; where it cannot be written, there is none, with the cause in
/// `error`. Uses all processors; the file is the same for any number of them.
[[nodiscard]] bool WQWritePNG(const WQImage &image, const std::filesystem::path &path,
                              ZPError *error = nullptr);
