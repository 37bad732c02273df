#include "data_tool/Command.h"
#include "data_tool/DecoderFolders.h"
#include "data_tool/Land.h"
#include "io/ZPSystemLog.h"
#include "io/ZPText.h"

#include <algorithm>
#include <map>

namespace {

/// Files and bytes by what `kindOf` says of the identifier.
struct Count {
    std::uint64_t files = 0, bytes = 0;
};

class InfoWriter {
  public:
    explicit InfoWriter(const WQDecoderSet &decoders) : _decoders(decoders) {}

    void write(const Archive &archive) {
        const ZPGorvaneBlockStorage &storage = archive.storage();
        _output.format("%s\n", ZPEscapedText(archive.dataFile->path().string()).c_str());
        line("family", ZPFormat("%s (%s), header version %u", archive.family->key(),
                                ZPGorvaneGameDisplayName(archive.family->game), storage.version()));
        line("content type",
             ZPFormat("%08x, subtype %08x", storage.contentType(), storage.contentSubtype()));
        line("file size", ZPFormat("%zu bytes, %u in the header",
                                   storage.fileHandle()->bytes().size(), storage.fileSize()));
        line("block size",
             ZPFormat("%u bytes, %zu blocks", storage.blockSize(), storage.blockCount()));
        line("free blocks",
             ZPFormat("%u, %08x to %08x, room for %u bytes", storage.freeBlockCount(),
                      storage.firstFreeBlock(), storage.lastFreeBlock(), storage.freeSpace()));
        line("root directory", ZPFormat("%08x", storage.rootOffset()));
        const auto *version = archive.dataFile->dataVersion();
        line("data version",
             version != nullptr ? std::to_string(version->version()) : "no version record");
        writeCounts(archive);
    }

    void writeHeights(std::pair<float, float> range) {
        _output.format("land heights from %g to %g\n", static_cast<double>(range.first),
                       static_cast<double>(range.second));
    }
    void finish() { _output.flush(); }

  private:
    void line(const char *label, const std::string &text) {
        _output.format("  %-15s %s\n", label, text.c_str());
    }

    void writeCounts(const Archive &archive) {
        std::map<std::pair<std::string, std::string>, Count> counts;
        Count all;
        for (const ZPGorvaneFileEntry &entry : archive.entries()) {
            const WQRecordKind kind = archive.kindOf(entry.identifier);
            const std::string type = kind.type ? ZPFormat("0x%02x", *kind.type) : "";
            Count &count = counts[{type, std::string(_decoders.nameOf(kind))}];
            for (Count *each : {&count, &all}) {
                ++each->files;
                each->bytes += entry.fileSize;
            }
        }
        line("files", ZPFormat("%llu of %llu bytes", static_cast<unsigned long long>(all.files),
                               static_cast<unsigned long long>(all.bytes)));
        _output.format("\n  type  class                        files         bytes\n");
        for (const auto &[key, count] : counts)
            _output.format("  %-5s %-24s %9llu %13llu\n", key.first.c_str(), key.second.c_str(),
                           static_cast<unsigned long long>(count.files),
                           static_cast<unsigned long long>(count.bytes));
        _output.write("\n");
    }

    const WQDecoderSet &_decoders;
    Output _output;
};

int info(const std::string &path, const GlobalOptions &global) {
    const WQDecoderSet decoders = loadDecoders(global);
    const DataSet dataSet = global.openDataSet(path);
    InfoWriter writer(decoders);
    for (const Archive &archive : dataSet.archives)
        writer.write(archive);
    const Archive *cells = dataSet.archiveWithName("cell");
    int status = kFine;
    if (dataSet.isDirectory && cells != nullptr && cells->family->game == ZPGorvaneGame::first) {
        const Land land(dataSet);
        if (const auto range = land.heightRange())
            writer.writeHeights(*range);
        writer.finish();
        for (const std::string &fault : {land.faultInHeights(), land.counts().unreadText()})
            if (!fault.empty()) {
                say(fault);
                status = kFoundOrFailed;
            }
    }
    writer.finish();
    return statusOver(dataSet, status);
}

} // namespace

CommandAction addInfoCommand(CLI::App &command) {
    const auto path = std::make_shared<std::string>();
    command.add_option("path", *path, "Data directory or archive")->required();
    return [path](const GlobalOptions &global) { return info(*path, global); };
}
