#include "data_tool/Command.h"
#include "data_tool/DecoderFolders.h"
#include "data_tool/DeferredSignals.h"
#include "data_tool/ExtractFolder.h"
#include "data_tool/FileSelection.h"
#include "data_tool/Progress.h"
#include "data_tool/RecordReader.h"
#include "io/ZPInputFile.h"
#include "io/ZPParallelLog.h"
#include "io/ZPSHA1.h"
#include "io/ZPSystemLog.h"
#include "io/ZPThreadValues.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

struct Options {
    std::string path, folder;
    bool asText = false, asJSON = false, again = false;
    FileSelection selection;
};

struct Job {
    const Archive *archive;
    const ZPGorvaneFileEntry *entry;
    /// The number of the folder that it goes to.
    std::size_t folder;
    std::string_view extension;
    /// Of the decoder, for a decoded record.
    std::uint64_t maker;
};

std::string textOfFile(const std::filesystem::path &path) {
    ZPInputFile file(path);
    std::string text(1 << 20, '\0');
    text.resize(file.read(text).value_or(0));
    return text;
}

class Extraction {
  public:
    Extraction(const Options &options, const DataSet &dataSet, const WQDecoderSet &decoders)
        : _options(options), _decoders(decoders), _folder(options.folder), _workers([&] {
              return Worker{RecordReader(dataSet, decoders), {}, OpenFolders(_folder)};
          }) {
        for (const Archive &archive : dataSet.archives) {
            std::map<std::string, std::size_t> unknown;
            for (const ZPGorvaneFileEntry &entry : archive.entries())
                if (options.selection.includes(archive, entry))
                    addJob(dataSet, archive, entry, unknown);
            for (const auto &[className, count] : unknown) {
                say(ZPFormat("%s: %zu files, %s: there is no decoder for them",
                             archive.name.c_str(), count, className.c_str()));
                _unknownCount += count;
            }
        }
    }

    /// The exit status, unless a signal ends the process.
    int run() {
        constexpr std::size_t kJobsPerTask = 64;
        const DeferredSignals signals;
        {
            Progress progress("extracting", _jobs.size());
            ZPParallelRangesWithLog(
                _jobs.size(), kJobsPerTask, [&](std::size_t first, std::size_t end) {
                    Worker &worker = _workers.local();
                    for (std::size_t job = first; job < end && !isToStop(); ++job)
                        doJob(worker, _jobs[job]);
                    progress.add(end - first);
                });
        }
        std::ranges::sort(_faults);
        for (const auto &[place, text] : _faults)
            say(text);
        std::string line =
            ZPFormat("%zu files written, %zu were there, %zu failed", _written.load(),
                     _skipped.load(), _faults.size() + _unknownCount);
        const std::size_t done = _written + _skipped + _faults.size();
        if (isToStop())
            line += ZPFormat("; %s, %zu were still to come",
                             DeferredSignals::received() != 0 ? "interrupted" : "given up",
                             _jobs.size() - done);
        say(line);
        return _faults.empty() && _unknownCount == 0 ? kFine : kFoundOrFailed;
    }

  private:
    struct Worker {
        RecordReader reader;
        ZPData scratch;
        OpenFolders folders;
    };

    bool isToStop() const { return _isGivenUp || DeferredSignals::received() != 0; }
    bool isRaw() const { return !_options.asText && !_options.asJSON; }

    /// `unknown` counts the files that nobody can decode, by class.
    void addJob(const DataSet &dataSet, const Archive &archive, const ZPGorvaneFileEntry &entry,
                std::map<std::string, std::size_t> &unknown) {
        const WQRecordKind kind = archive.kindOf(entry.identifier);
        const auto file = _decoders.fileFor(kind);
        std::string className(_decoders.nameOf(kind));
        if (className.empty())
            className = kind.type ? ZPFormat("type_%02x", *kind.type) : "files";
        const bool hasText = _options.asText && RecordReader::hasClass(archive, entry.identifier);
        if (!isRaw() && !file && _decoders.rowFor(kind) == nullptr && !hasText) {
            ++unknown[className];
            return;
        }
        std::string_view extension = _options.asText ? "txt" : _options.asJSON ? "json" : "bin";
        if (isRaw() && file)
            if (const auto &own = _decoders.files()[*file].description.extension; !own.empty())
                extension = own;
        const std::size_t folder =
            _folder.folder(dataSet.isDirectory ? archive.name : "", plainName(className));
        _jobs.push_back({&archive, &entry, folder, extension, isRaw() ? 0 : makerOf(file)});
    }

    /// What becomes of a record depends on its decoder, if that is in a file, and on this program.
    std::uint64_t makerOf(std::optional<std::size_t> file) {
        const auto place = file.value_or(_decoders.files().size());
        std::uint64_t &maker = _makers[place];
        if (maker == 0) {
            std::string text = file ? textOfFile(_decoders.files()[*file].path) : std::string();
            text += PLOTTERRA_VERSION;
            const ZPSHA1Digest digest = ZPSHA1DigestOfData(std::as_bytes(std::span(text)));
            std::memcpy(&maker, digest.data(), sizeof maker);
            maker |= 1; // none is 0
        }
        return maker;
    }

    void doJob(Worker &worker, const Job &job) {
        const ZPGorvaneFileEntry &entry = *job.entry;
        const std::string name = ZPFormat("%08x.", entry.identifier) + std::string(job.extension);
        const int folder = worker.folders.descriptorOf(job.folder);
        if (folder < 0)
            return failToWrite(job, name, ZPError::posix(errno));
        ExtractedFile file(folder, name, entry.mtime);
        file.setMaker(isRaw() ? 0 : job.maker ^ entry.fileSize);
        // Decoding is what takes time; bytes are at hand, and held against the file's size.
        if (!isRaw() && !_options.again && file.isThere()) {
            ++_skipped;
            return;
        }
        ZPError error;
        const auto bytes =
            job.archive->dataFile->readBytesForFileEntry(entry, worker.scratch, &error);
        if (!bytes)
            return fail(job, error.failureReason());
        if (const std::string *cause = job.archive->damage->causeOf(entry.identifier))
            return fail(job, *cause);
        std::string text;
        if (!isRaw()) {
            const auto result = worker.reader.decode(*job.archive, entry.identifier, *bytes);
            if (result && result->fault)
                return fail(job, faultText(*result));
            text = _options.asText ? worker.reader.text(*job.archive, entry.identifier, *bytes)
                                   : worker.reader.json();
            if (text.empty())
                return fail(job, "there is no decoder for it");
        }
        const auto contents = isRaw() ? *bytes : std::as_bytes(std::span(text));
        switch (file.write(contents, _options.again || !isRaw(), &error)) {
        case ExtractedFile::Outcome::written: ++_written; return;
        case ExtractedFile::Outcome::wasThere: ++_skipped; return;
        case ExtractedFile::Outcome::failed: failToWrite(job, name, error);
        }
    }

    /// Where no other file could be written either, the first one to fail ends it all.
    void failToWrite(const Job &job, const std::string &name, const ZPError &error) {
        static constexpr int kOfTheWholeFolder[] = {ENOSPC, EDQUOT, EROFS, EIO, EMFILE, ENFILE};
        const bool isOfAll =
            error.domain == kZPPOSIXErrorDomain &&
            std::ranges::find(kOfTheWholeFolder, error.code) != std::end(kOfTheWholeFolder);
        if (!isOfAll || !_isGivenUp.exchange(true))
            fail(job, name + ": " + error.failureReason());
    }

    void fail(const Job &job, const std::string &reason) {
        const std::lock_guard guard(_lock);
        const auto place = static_cast<std::size_t>(&job - _jobs.data());
        _faults.emplace_back(place, ZPFormat("%s: %08x: %s", job.archive->name.c_str(),
                                             job.entry->identifier, reason.c_str()));
    }

    const Options &_options;
    const WQDecoderSet &_decoders;
    ExtractFolder _folder;
    std::vector<Job> _jobs;
    std::size_t _unknownCount = 0;
    /// By the place of the decoder's file; those without one behind the last.
    std::vector<std::uint64_t> _makers = std::vector<std::uint64_t>(_decoders.files().size() + 1);
    ZPThreadValues<Worker> _workers;
    std::atomic<std::size_t> _written = 0, _skipped = 0;
    std::atomic<bool> _isGivenUp = false;
    std::mutex _lock;
    /// By the place of the job, for them to be said in order.
    std::vector<std::pair<std::size_t, std::string>> _faults;
};

int extract(Options &options, const GlobalOptions &global) {
    const WQDecoderSet decoders = loadDecoders(global);
    options.selection.prepare(decoders);
    const DataSet dataSet = global.openDataSet(options.path);
    int status = Extraction(options, dataSet, decoders).run();
    if (!options.selection.sayWhatIsNotThere(dataSet))
        status = kFoundOrFailed;
    return statusOver(dataSet, status);
}

} // namespace

CommandAction addExtractCommand(CLI::App &command) {
    const auto options = std::make_shared<Options>();
    command.add_option("path", options->path, "Data directory or archive")->required();
    command.add_option("folder", options->folder, "Where the files go; made if need be")
        ->required();
    auto *text = command.add_flag("--text", options->asText, "Decoded records, as text");
    command.add_flag("--json", options->asJSON, "Decoded records, as JSON")->excludes(text);
    command.add_flag("--again", options->again, "Write files anew that an earlier run has written");
    options->selection.addOptions(command);
    return [options](const GlobalOptions &global) { return extract(*options, global); };
}
