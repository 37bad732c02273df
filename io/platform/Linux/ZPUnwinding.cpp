#include "io/ZPUnwinding.h"

#include <execinfo.h>

void ZPPrepareUnwinding() {
    void *frame;
    backtrace(&frame, 1);
}
