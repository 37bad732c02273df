#pragma once

#include <cstddef>

namespace tbb {

template <class Value>
class blocked_range {
  public:
    blocked_range(Value begin, Value end, std::size_t grainSize = 1)
        : _begin(begin), _end(end), _grainSize(grainSize) {}

    Value begin() const { return _begin; }
    Value end() const { return _end; }
    std::size_t size() const { return static_cast<std::size_t>(_end - _begin); }
    std::size_t grainsize() const { return _grainSize; }

  private:
    Value _begin, _end;
    std::size_t _grainSize;
};

} // namespace tbb
