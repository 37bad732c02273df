#pragma once

#include "sample/SampleWorld.h"

/// Land blocks with a file that only the newer world has, only the older one has, or that differs;
/// ascending, each list on its own.
struct SampleChanges {
    std::vector<std::uint16_t> added, removed, changed;
};

/// `older` and `newer` are made with equal options but for the age.
SampleChanges SampleCompareWorlds(const SampleWorld &older, const SampleWorld &newer);
