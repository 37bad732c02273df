#pragma once

#include <string_view>

/// The parts of the page that are the same for every world, as the build put them into the program:
/// they stand in memory for its whole run.
namespace WQWebAssets {

/// The page with a name in double braces at each place that something goes to.
extern const std::string_view page;
extern const std::string_view style;
/// What runs in the page, and what runs in its workers.
extern const std::string_view application;
extern const std::string_view worker;
/// The libraries for the flat map and for the relief.
extern const std::string_view flatLibrary;
extern const std::string_view flatLibraryStyle;
extern const std::string_view reliefLibrary;
/// The licences of all of it, as text.
extern const std::string_view licences;

} // namespace WQWebAssets
