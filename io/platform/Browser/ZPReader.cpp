#include "io/ZPReader.h"

bool ZPIsReaderGone(int) {
    return false;
}
