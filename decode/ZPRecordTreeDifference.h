#pragma once

#include "decode/ZPRecordTree.h"

/// A value that differs between two trees, each side as text, empty where the value is not there.
struct ZPRecordChange {
    /// Names and places from the outermost value on: `weathers[2].name`.
    std::string path;
    std::string before, after;
};

/// What changed from one decoded record to another of the same decoder. Values of a group are
/// compared by name; those of a list in order, what both lists begin and end with being set aside
/// first, so that an insertion is one change.
[[nodiscard]] std::vector<ZPRecordChange> ZPRecordTreeDifference(const ZPRecordTree &before,
                                                                 const ZPRecordTree &after);
