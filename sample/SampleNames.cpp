#include "sample/SampleNames.h"

#include "sample/SampleRandom.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr const char *kBeginnings[] = {
    "Cald",   "Thorn",  "Salt",  "Alder", "Harrow", "Copper", "Stone", "Larken", "Dun",  "Ash",
    "Fen",    "Wether", "Marl",  "Osier", "Reed",   "Winter", "Gors",  "Lin",    "Tarn", "Brack",
    "Hollow", "Ember",  "Slate", "Heron", "Moss",   "Rook",   "Elder", "Silver", "Wych", "Barrow"};
constexpr const char *kEndings[] = {"wick",  "holt",  "reach", "moor",  "mere",   "fall", "quay",
                                    "by",    "ford",  "holm",  "stead", "combe",  "well", "gate",
                                    "haven", "fleet", "leigh", "ness",  "thorpe", "cross"};
constexpr const char *kBefore[] = {"Old ", "Pale ", "High ", "Nether ", "Upper ", "Far "};
constexpr const char *kAfter[] = {" End", " Hythe", " Rock", " Landing", " Green", " Point"};
constexpr const char *kAccented[] = {"Mírefall", "Brún Estel", "Quillón", "Vérey", "Ísholm"};

template <std::size_t Count>
std::string anyOf(const char *const (&parts)[Count], SampleRandom &random) {
    return parts[random.below(static_cast<std::uint32_t>(Count))];
}

std::string anyName(SampleRandom &random) {
    const std::string ending = anyOf(kEndings, random);
    std::string name = anyOf(kBeginnings, random) + ending;
    if (random.chance(0.12))
        return anyOf(kBefore, random) + name;
    return random.chance(0.14) ? name + anyOf(kAfter, random) : name;
}

} // namespace

std::vector<std::string> SampleNamesOfPlaces(std::uint64_t seed, std::size_t count) {
    SampleRandom random(SampleHash(seed, 32));
    std::vector<std::string> names;
    if (count > 0)
        names.push_back(anyOf(kAccented, random));
    while (names.size() < count)
        if (std::string name = anyName(random); std::ranges::find(names, name) == names.end())
            names.push_back(std::move(name));
    return names;
}
