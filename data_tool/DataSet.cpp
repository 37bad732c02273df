#include "data_tool/DataSet.h"

#include "data_tool/ArchiveFamily.h"
#include "data_tool/Failure.h"

#include <algorithm>
#include <system_error>

namespace {

ArchiveRole guessedRole(const std::string &fileName) {
    for (const auto &[part, role] :
         {std::pair{"cell", ArchiveRole::cell}, std::pair{"highres", ArchiveRole::highres},
          std::pair{"local", ArchiveRole::local}})
        if (fileName.find(part) != std::string::npos)
            return role;
    return ArchiveRole::portal;
}

/// A name that can stand in a table and be that of a folder.
std::string plainName(std::string name) {
    for (char &letter : name)
        if (letter <= ' ' || letter == 0x7F || letter == '/')
            letter = '_';
    return name.starts_with('.') ? "_" + name : name;
}

std::unique_ptr<ZPGorvaneDataFile> newDataFile(const std::filesystem::path &path,
                                               const GameRow &game, ArchiveRole role) {
    if (game.game != ZPGorvaneGame::first)
        return std::make_unique<ZPGorvaneDataFile>(*game.family, path);
    auto dataFile = std::make_unique<WQDataFile>(path);
    constexpr WQDataFile::Type kTypes[] = {WQDataFile::portal, WQDataFile::highres,
                                           WQDataFile::cell, WQDataFile::local};
    dataFile->setType(kTypes[static_cast<std::size_t>(role)]);
    return dataFile;
}

Archive openArchive(const std::filesystem::path &path, const GameRow *game) {
    if (game == nullptr) {
        game = &familyOfArchive(path);
    } else {
        ZPError error;
        const auto handle = ZPFileHandle::fileHandleAtPath(path, &error);
        if (handle == nullptr)
            throw CommandFailure(path.string() + ": " + error.failureReason());
        if (const std::string reason = reasonNotOfFamily(handle->bytes(), *game); !reason.empty())
            throw CommandFailure(path.string() + ": " + reason);
    }
    const std::string fileName = path.filename().string();
    const auto *known = std::ranges::find(game->files, fileName, &ArchiveFileName::fileName).base();
    const bool isKnown = known != game->files.data() + game->files.size();
    Archive archive{isKnown ? known->name : plainName(path.stem().string()),
                    isKnown ? known->role : guessedRole(fileName), game, nullptr};
    archive.dataFile = newDataFile(path, *game, archive.role);
    if (archive.dataFile->blockStorage() == nullptr)
        throw CommandFailure(path.string() + ": its header does not suit a file of this size");
    archive.dataFile->quickLoadDataVersion();
    archive.dataFile->loadFileEntriesIfNecessary();
    return archive;
}

std::vector<std::filesystem::path> archivesInDirectory(const std::filesystem::path &directory,
                                                       const GameRow *wanted) {
    std::vector<std::filesystem::path> paths;
    for (const GameRow &game : gameTable())
        if (wanted == nullptr || wanted == &game)
            for (const ArchiveFileName &file : game.files)
                if (const auto path = directory / file.fileName; std::filesystem::exists(path))
                    paths.push_back(path);
    if (!paths.empty())
        return paths;
    std::error_code fault;
    for (std::filesystem::directory_iterator entry(directory, fault), end; !fault && entry != end;
         entry.increment(fault))
        if (entry->path().extension() == ".dat")
            paths.push_back(entry->path());
    if (fault)
        throw CommandFailure(directory.string() + ": " + fault.message());
    if (paths.empty())
        throw CommandFailure(directory.string() + ": there is no archive (*.dat) in it");
    std::ranges::sort(paths);
    return paths;
}

} // namespace

WQRecordKind Archive::kindOf(std::uint32_t identifier) const {
    WQRecordKind kind;
    if (game->classNameOf != nullptr)
        if (const char *className = game->classNameOf(role, identifier))
            kind.className = className;
    if (role != ArchiveRole::cell)
        kind.type = static_cast<std::uint8_t>(identifier >> 24);
    return kind;
}

const Archive *DataSet::archiveWithName(std::string_view name) const {
    const auto found = std::ranges::find(archives, name, &Archive::name);
    return found != archives.end() ? &*found : nullptr;
}

const Archive *DataSet::portal() const {
    if (const Archive *named = archiveWithName("portal"))
        return named;
    const auto found = std::ranges::find(archives, ArchiveRole::portal, &Archive::role);
    return found != archives.end() ? &*found : nullptr;
}

const WQDataFile &DataSet::cellDataFile() const {
    for (const Archive &archive : archives)
        if (const auto *dataFile = dynamic_cast<const WQDataFile *>(archive.dataFile.get());
            dataFile != nullptr && archive.role == ArchiveRole::cell)
            return *dataFile;
    throw CommandFailure(path.string() + ": has no cell archive of the first game");
}

WQDecodingContext DataSet::decodingContext() const {
    const Archive *archive = portal();
    const auto *version = archive != nullptr ? archive->dataFile->dataVersion() : nullptr;
    return {version != nullptr ? version->version() : 0};
}

ZPGorvaneDataFile *DataSetClientData::dataFileWithName(std::string_view name) {
    const Archive *archive = name == "portal" ? _dataSet.portal() : _dataSet.archiveWithName(name);
    return archive != nullptr ? archive->dataFile.get() : nullptr;
}

DataSet openDataSet(const std::filesystem::path &path, const GameRow *game) {
    DataSet dataSet{path, std::filesystem::is_directory(path), {}};
    if (!dataSet.isDirectory) {
        dataSet.archives.push_back(openArchive(path, game));
        return dataSet;
    }
    for (const auto &archivePath : archivesInDirectory(path, game)) {
        try {
            dataSet.archives.push_back(openArchive(archivePath, game));
        } catch (const CommandFailure &failure) {
            say(failure.what());
            dataSet.isWhole = false;
        }
    }
    if (dataSet.archives.empty())
        throw CommandFailure(path.string() + ": none of its archives can be opened");
    return dataSet;
}
