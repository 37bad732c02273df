#include "data_tool/DataSet.h"

#include "data_tool/Failure.h"
#include "game/WQArchiveFamilies.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <algorithm>
#include <map>
#include <system_error>

namespace {

ZPGorvaneArchiveRole guessedRole(const std::string &fileName) {
    for (const auto &[part, role] : {std::pair{"cell", ZPGorvaneArchiveRole::cell},
                                     std::pair{"highres", ZPGorvaneArchiveRole::highres},
                                     std::pair{"local", ZPGorvaneArchiveRole::local}})
        if (fileName.find(part) != std::string::npos)
            return role;
    return ZPGorvaneArchiveRole::portal;
}

/// The family that a file suits, `wanted` alone if that is not null. Throws CommandFailure where
/// there is none.
const ZPGorvaneArchiveFamily &familyOfArchive(const std::filesystem::path &path,
                                              const ZPGorvaneArchiveFamily *wanted) {
    ZPError error;
    const auto handle = ZPFileHandle::fileHandleAtPath(path, &error);
    if (handle == nullptr)
        throw CommandFailure(path.string() + ": " + error.failureReason());
    std::string reason;
    const ZPGorvaneArchiveFamily *family = wanted;
    if (wanted == nullptr)
        family = ZPGorvaneFamilyOfFile(handle->bytes(), WQArchiveFamilies(), reason);
    else
        reason = wanted->reasonAgainst(handle->bytes());
    if (!reason.empty())
        throw CommandFailure(path.string() + ": " + reason);
    return *family;
}

Archive openArchive(const std::filesystem::path &path, const ZPGorvaneArchiveFamily *wanted) {
    const ZPGorvaneArchiveFamily &family = familyOfArchive(path, wanted);
    const std::string fileName = path.filename().string();
    const ZPGorvaneArchiveName *known = family.archiveInFile(fileName);
    Archive archive{known != nullptr ? known->name : plainName(path.stem().string()),
                    known != nullptr ? known->role : guessedRole(fileName), &family, nullptr,
                    nullptr};
    archive.dataFile = family.newDataFile(path, archive.role);
    if (archive.dataFile->blockStorage() == nullptr)
        throw CommandFailure(path.string() + ": " + archive.dataFile->openingFault());
    archive.dataFile->quickLoadDataVersion();
    archive.dataFile->loadFileEntriesIfNecessary();
    archive.damage = std::make_unique<ArchiveDamage>(*archive.dataFile);
    return archive;
}

std::vector<std::filesystem::path> archivesInDirectory(const std::filesystem::path &directory,
                                                       const ZPGorvaneArchiveFamily *wanted) {
    std::vector<std::filesystem::path> paths;
    for (const ZPGorvaneArchiveFamily *family : WQArchiveFamilies())
        if (wanted == nullptr || wanted == family)
            for (const ZPGorvaneArchiveName &archive : family->archives)
                if (const auto path = directory / archive.fileName; std::filesystem::exists(path))
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

/// Archives of two families in one directory may go by the same name.
void makeNamesDifferent(std::vector<Archive> &archives) {
    std::map<std::string, unsigned> counts;
    for (const Archive &archive : archives)
        ++counts[archive.name];
    for (Archive &archive : archives)
        if (counts[archive.name] > 1)
            archive.name = plainName(archive.dataFile->path().stem().string());
}

} // namespace

std::string plainName(const std::string &name) {
    // Letters of other scripts stay, unless something is hidden among them.
    const bool isText = ZPIsValidUTF8(name) && ZPEscapedText(name) == name;
    std::string plain;
    for (const char letter : name) {
        const auto byte = static_cast<unsigned char>(letter);
        const bool isPlain =
            byte < 0x80 ? byte > ' ' && byte != 0x7F && byte != '/' && byte != '%' : isText;
        const bool hidesFile = letter == '.' && plain.empty();
        plain += isPlain && !hidesFile ? std::string(1, letter) : ZPFormat("%%%02X", byte);
    }
    return plain;
}

WQRecordKind Archive::kindOf(std::uint32_t identifier) const {
    WQRecordKind kind{family->game};
    if (family->classNameOf != nullptr)
        if (const char *className = family->classNameOf(role, identifier))
            kind.className = className;
    if (role != ZPGorvaneArchiveRole::cell)
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
    const auto found = std::ranges::find(archives, ZPGorvaneArchiveRole::portal, &Archive::role);
    return found != archives.end() ? &*found : nullptr;
}

WQDataFile &DataSet::cellDataFile() const {
    for (const Archive &archive : archives)
        if (auto *dataFile = dynamic_cast<WQDataFile *>(archive.dataFile.get());
            dataFile != nullptr && archive.role == ZPGorvaneArchiveRole::cell)
            return *dataFile;
    throw CommandFailure(path.string() + ": has no cell archive of the first game");
}

WQDecodingContext DataSet::decodingContext() const {
    const Archive *archive = portal();
    const auto *version = archive != nullptr ? archive->dataFile->dataVersion() : nullptr;
    return {version != nullptr ? version->version() : 0};
}

void DataSet::sayFaults() const {
    constexpr std::size_t kMostLines = 20;
    std::size_t lines = 0, all = 0;
    for (const Archive &archive : archives) {
        all += archive.dataFile->findings().count();
        for (const ZPGorvaneFinding &finding : archive.dataFile->findings().kept())
            if (++lines <= kMostLines)
                say(archive.fileName() + ": " + finding.text());
    }
    if (all > kMostLines)
        say(ZPFormat("(%zu more faults are not shown; `plotterra-data check` lists them all)",
                     all - kMostLines));
}

bool DataSet::isSound() const {
    return isWhole && std::ranges::all_of(archives, [](const Archive &archive) {
               return archive.dataFile->findings().count() == 0;
           });
}

ZPGorvaneDataFile *DataSetClientData::dataFileWithName(std::string_view name) {
    const Archive *archive = name == "portal" ? _dataSet.portal() : _dataSet.archiveWithName(name);
    return archive != nullptr ? archive->dataFile.get() : nullptr;
}

DataSet openDataSet(const std::filesystem::path &path, const ZPGorvaneArchiveFamily *family) {
    DataSet dataSet{path, std::filesystem::is_directory(path), {}};
    if (!dataSet.isDirectory) {
        dataSet.archives.push_back(openArchive(path, family));
        return dataSet;
    }
    for (const auto &archivePath : archivesInDirectory(path, family)) {
        try {
            dataSet.archives.push_back(openArchive(archivePath, family));
        } catch (const CommandFailure &failure) {
            say(failure.what());
            dataSet.isWhole = false;
        }
    }
    makeNamesDifferent(dataSet.archives);
    if (dataSet.archives.empty())
        throw CommandFailure(path.string() + ": none of its archives can be opened");
    return dataSet;
}
