#pragma once

#include "archive/ZPGorvaneDataFile.h"
#include "archive/ZPGorvaneGame.h"

#include <string_view>

class ZPGorvaneClientData;

/// A class of client data, as the registry knows it.
struct ZPGorvaneClientDataClass {
    const char *name;
    std::unique_ptr<ZPGorvaneClientData> (*initWithBasePath)(const std::filesystem::path &basePath);
};

/// The archives of one directory of a game installation. The base opens none.
class ZPGorvaneClientData {
  public:
    ZPGorvaneClientData() = delete;
    explicit ZPGorvaneClientData(std::filesystem::path basePath) : _basePath(std::move(basePath)) {}
    virtual ~ZPGorvaneClientData() = default;
    ZPGorvaneClientData(const ZPGorvaneClientData &) = delete;
    ZPGorvaneClientData &operator=(const ZPGorvaneClientData &) = delete;

    /// Makes a class known for a game, in place of any earlier one, and logs what is known. Called
    /// while the program starts, on one thread; the registry only grows and is not locked.
    static void registerClientDataClass(const ZPGorvaneClientDataClass &clientDataClass,
                                        ZPGorvaneGame forGorvaneGame);
    /// Null when no class is registered.
    [[nodiscard]] static const ZPGorvaneClientDataClass *
    clientDataClassForGorvaneGame(ZPGorvaneGame game);

    const std::filesystem::path &basePath() const { return _basePath; }
    bool verbose() const { return _verbose; }
    void setVerbose(bool verbose) { _verbose = verbose; }

    /// Writes a line to standard output and flushes it.
    void log(const char *format, ...) const __attribute__((format(printf, 2, 3)));

    /// Null when there is no such archive.
    [[nodiscard]] virtual ZPGorvaneDataFile *dataFileWithName(std::string_view) { return nullptr; }
    /// The record of one entry of one of the archives; null when there is none or it is malformed.
    [[nodiscard]] virtual std::unique_ptr<ZPGorvaneStoredObject>
    newObjectForFileEntry(const ZPGorvaneFileEntry &, const ZPGorvaneDataFile & /*ofDataFile*/) {
        return nullptr;
    }
    virtual void loadAllFileEntries() {}

  private:
    std::filesystem::path _basePath;
    bool _verbose = false;
};
