#include "map/overlay/lettering/WQSpareMemory.h"

#include <sys/mman.h>

bool WQHasSpareMemory(std::size_t size) {
    void *memory = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return memory != MAP_FAILED && munmap(memory, size) == 0;
}
