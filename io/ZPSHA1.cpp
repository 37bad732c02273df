#include "io/ZPSHA1.h"

#include "io/ZPExtensions.h"

std::string ZPSHA1DigestString(std::span<const std::byte> data) {
    return ZPHexString(ZPSHA1DigestOfData(data));
}
