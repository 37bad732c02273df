#include "fuzz/FuzzTarget.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace {

struct Folder {
    Folder() {
        if (!makeIn("/dev/shm") && !makeIn(std::filesystem::temp_directory_path()))
            throw std::runtime_error("no folder can be made for temporary files");
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }

    bool makeIn(const std::filesystem::path &parent) {
        std::string name = parent / "plotterra-fuzz-XXXXXX";
        if (mkdtemp(name.data()) == nullptr)
            return false;
        path = name;
        return true;
    }

    std::filesystem::path path;
};

} // namespace

const std::filesystem::path &FuzzFolder() {
    static const Folder folder;
    return folder.path;
}

void FuzzWriteFile(const std::string &name, std::span<const std::byte> bytes) {
    std::ofstream file(FuzzFolder() / name, std::ios::binary);
    file.write(reinterpret_cast<const char *>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    FuzzExpect(!file.fail());
}

void FuzzExpect(bool claim) {
    if (!claim)
        std::abort();
}
