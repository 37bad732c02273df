#include "io/ZPAbandonProcess.h"

#include "io/ZPTemporaryName.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <string_view>
#include <unistd.h>

namespace {

constinit std::atomic<int> statusOfFailure = EXIT_FAILURE;

/// A line put together without memory: cut where it gets too long, and in printable ASCII alone.
class BareLine {
  public:
    void append(std::string_view text) {
        for (const char byte : text.substr(0, std::size(_bytes) - 1 - _length))
            _bytes[_length++] = byte >= ' ' && byte <= '~' ? byte : '?';
    }
    void write() {
        _bytes[_length++] = '\n';
        [[maybe_unused]] const ssize_t count = ::write(STDERR_FILENO, _bytes, _length);
    }

  private:
    char _bytes[512];
    std::size_t _length = 0;
};

} // namespace

void ZPSetStatusOfFailure(int status) {
    statusOfFailure = status;
}

int ZPStatusOfFailure() {
    return statusOfFailure;
}

void ZPAbandonProcess(const char *reason) noexcept {
    ZPRemoveTemporaries();
    BareLine line;
    line.append(program_invocation_short_name);
    line.append(": ");
    line.append(reason);
    line.write();
    _exit(statusOfFailure);
}
