#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

// The program, the worlds that the suite makes for it first, and its pictures' size at scale 1.
inline const std::string kProgram = PLOTTERRA_PROGRAM;
inline const std::string kWorld = PLOTTERRA_SAMPLE_WORLD;
inline const std::string kOlderWorld = PLOTTERRA_OLDER_SAMPLE_WORLD;
constexpr std::uint32_t kSize = 2041;

/// Blocks and names of the table that the program was built with, read from its file, row by row.
inline std::vector<std::pair<unsigned, std::string>> knownDungeonRows() {
    std::vector<std::pair<unsigned, std::string>> rows;
    std::ifstream file(PLOTTERRA_KNOWN_DUNGEONS);
    for (std::string line; std::getline(file, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        if (!line.empty() && !line.starts_with('#'))
            rows.emplace_back(std::stoul(line, nullptr, 16), line.substr(line.rfind('\t') + 1));
    }
    return rows;
}
