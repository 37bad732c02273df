#pragma once

#include <cstddef>

/// Whether the process can have so many more bytes. The libraries that draw shapes and text end it,
/// or fall over, where they get none, so they are asked for only where this holds.
[[nodiscard]] bool WQHasSpareMemory(std::size_t size);
