#include "io/ZPBackgroundWork.h"

#include <system_error>

std::future<void> ZPDoInBackground(const std::function<void()> &work) {
    try {
        return std::async(std::launch::async, work);
    } catch (const std::system_error &) {
        work();
        return {};
    }
}
