#pragma once

#include "tests/TestSupport.h"

#include <cstring>
#include <fstream>
#include <functional>

/// A world in a folder of its own whose portal archive has other bytes; the cell archive is a link
/// to that of `world`. Returns its path.
inline std::string patchedWorld(const std::filesystem::path &folder, const std::string &world,
                                const std::function<void(std::string &portal)> &patch) {
    std::string portal = textOfFile(world + "/client_portal.dat");
    patch(portal);
    std::filesystem::create_directory(folder);
    std::ofstream(folder / "client_portal.dat") << portal;
    std::filesystem::create_symlink(world + "/client_cell_1.dat", folder / "client_cell_1.dat");
    return folder;
}

/// Sets a real height of the region record. Of a small index, which lies in the record's first
/// block.
inline void patchLandHeight(std::string &portal, std::size_t index, float height) {
    // Identifier and two words; the world's name and its length; eight words more.
    const std::size_t record = portal.find(std::string("\0\0\0\x13\1\0\0\0\3\0\0\0", 12));
    const std::size_t heights =
        record + 12 + 2 + static_cast<unsigned char>(portal.at(record + 12)) + 32;
    std::memcpy(&portal.at(heights + index * sizeof height), &height, sizeof height);
}
