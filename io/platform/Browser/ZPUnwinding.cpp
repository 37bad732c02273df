#include "io/ZPUnwinding.h"

void ZPPrepareUnwinding() {}
