#pragma once

/// What is done for speed alone. The answers are the same without it, which tests see to: the
/// environment variable PLOTTERRA_WITHOUT closes the ways that it names, separated by commas.
enum class ZPFastWay {
    map,   ///< archives are mapped; without it they are read as a whole when they are opened
    ahead, ///< archives are brought into the system's cache in their order first
    index, ///< directory trees are read by all processors at once
};

[[nodiscard]] bool ZPIsOpen(ZPFastWay way);
