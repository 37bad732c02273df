// A lettering library from some other build of the program.

#include "map/overlay/WQLetteringLibrary.h"

const char WQLetteringVersion[] = "0.9-older";

WQMaskMaker *WQLetteringMaskMaker(const char *) {
    return nullptr;
}
