#include "decode/ZPFieldOutput.h"

void ZPFieldOutput::openContainer(Kind kind, Name name) {
    _tree.openContainer(kind, name, {_mark, 0});
    // A count that was read for the container is not its first value's.
    skipToCursor();
}

void ZPFieldOutput::vector(Name name, std::span<const float> components) {
    static constexpr Name kNames[] = {"x", "y", "z", "w"};
    const ZPByteRange range = takeRange();
    _tree.openContainer(Kind::group, name, range);
    for (std::size_t index = 0; index < components.size() && index < std::size(kNames); ++index)
        _tree.addFloat(Kind::float32, kNames[index], static_cast<double>(components[index]), range);
    _tree.closeContainer(range.offset + range.length);
}
