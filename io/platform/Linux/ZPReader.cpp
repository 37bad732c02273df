#include "io/ZPReader.h"

#include <poll.h>

bool ZPIsReaderGone(int descriptor) {
    pollfd output = {descriptor, POLLOUT, 0};
    return poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0;
}
