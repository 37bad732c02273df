// Where there is one thread alone, a library may wait for ever for another to begin.

#include "io/ZPBackgroundWork.h"

std::future<void> ZPDoInBackground(const std::function<void()> &work) {
    work();
    return {};
}
