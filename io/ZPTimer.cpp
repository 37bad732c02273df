#include "io/ZPTimer.h"

std::string ZPTimer::description() const {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(_date2 - _date1);
    return std::to_string(seconds.count()) + " seconds";
}
