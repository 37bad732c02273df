#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Names of places, in UTF-8, none twice: others for another seed. One has an accent, since the
/// game's own texts have some.
std::vector<std::string> SampleNamesOfPlaces(std::uint64_t seed, std::size_t count);
