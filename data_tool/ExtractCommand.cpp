#include "data_tool/Command.h"
#include "data_tool/DecoderFolders.h"
#include "data_tool/DeferredSignals.h"
#include "data_tool/ExtractFolder.h"
#include "data_tool/FileSelection.h"
#include "data_tool/Progress.h"
#include "data_tool/RecordReader.h"
#include "io/ZPSystemLog.h"

#include <algorithm>
#include <tbb/blocked_range.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>

namespace {

struct Options {
    std::string path, folder;
    bool asText = false, asJSON = false, again = false;
    FileSelection selection;
};

struct Job {
    const Archive *archive;
    const ZPGorvaneFileEntry *entry;
    /// Of the folder that it goes to.
    int folder;
    std::string_view extension;
};

class Extraction {
  public:
    Extraction(const Options &options, const DataSet &dataSet, const WQDecoderSet &decoders)
        : _options(options), _decoders(decoders), _folder(options.folder), _workers([&] {
              return Worker{RecordReader(dataSet, decoders), {}};
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
            tbb::parallel_for(tbb::blocked_range<std::size_t>(0, _jobs.size(), kJobsPerTask),
                              [&](const auto &range) {
                                  Worker &worker = _workers.local();
                                  for (std::size_t job = range.begin();
                                       job < range.end() && !DeferredSignals::received(); ++job)
                                      doJob(worker, _jobs[job]);
                                  progress.add(range.size());
                              });
        }
        std::ranges::sort(_faults);
        for (const auto &[place, text] : _faults)
            say(text);
        std::string line =
            ZPFormat("%zu files written, %zu were there, %zu failed", _written.load(),
                     _skipped.load(), _faults.size() + _unknownCount);
        const std::size_t done = _written + _skipped + _faults.size();
        if (DeferredSignals::received() != 0)
            line += ZPFormat("; interrupted, %zu were still to come", _jobs.size() - done);
        say(line);
        return _faults.empty() && _unknownCount == 0 ? kFine : kFoundOrFailed;
    }

  private:
    struct Worker {
        RecordReader reader;
        ZPData scratch;
    };

    bool isRaw() const { return !_options.asText && !_options.asJSON; }

    /// `unknown` counts the files that nobody can decode, by class.
    void addJob(const DataSet &dataSet, const Archive &archive, const ZPGorvaneFileEntry &entry,
                std::map<std::string, std::size_t> &unknown) {
        const WQRecordKind kind = archive.kindOf(entry.identifier);
        const auto file = _decoders.fileFor(kind);
        std::string className(_decoders.nameOf(kind));
        if (className.empty())
            className = kind.type ? ZPFormat("type_%02x", *kind.type) : "files";
        if (!isRaw() && !file && _decoders.rowFor(kind) == nullptr) {
            ++unknown[className];
            return;
        }
        std::string_view extension = _options.asText ? "txt" : _options.asJSON ? "json" : "bin";
        if (isRaw() && file)
            if (const auto &own = _decoders.files()[*file].description.extension; !own.empty())
                extension = own;
        const int folder = _folder.folder(dataSet.isDirectory ? archive.name : "", className);
        _jobs.push_back({&archive, &entry, folder, extension});
    }

    void doJob(Worker &worker, const Job &job) {
        const ZPGorvaneFileEntry &entry = *job.entry;
        const std::string name = ZPFormat("%08x.", entry.identifier) + std::string(job.extension);
        // Decoding is what takes time; bytes are at hand, and held against the file's size.
        if (!isRaw() && !_options.again &&
            ExtractFolder::hasFile(job.folder, name, entry.mtime, std::nullopt)) {
            ++_skipped;
            return;
        }
        ZPError error;
        const auto bytes =
            job.archive->dataFile->readBytesForFileEntry(entry, worker.scratch, &error);
        if (!bytes)
            return fail(job, error.failureReason());
        std::string text;
        if (!isRaw()) {
            const auto result = worker.reader.decode(*job.archive, entry.identifier, *bytes);
            if (result->fault)
                return fail(job, faultText(*result));
            text = _options.asText ? worker.reader.text(*job.archive, entry.identifier, *bytes)
                                   : worker.reader.json();
        }
        const auto contents = isRaw() ? *bytes : std::as_bytes(std::span(text));
        switch (ExtractFolder::writeFile(job.folder, name, contents, entry.mtime,
                                         _options.again || !isRaw(), &error)) {
        case ExtractFolder::Outcome::written: ++_written; return;
        case ExtractFolder::Outcome::wasThere: ++_skipped; return;
        case ExtractFolder::Outcome::failed: fail(job, name + ": " + error.failureReason());
        }
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
    tbb::enumerable_thread_specific<Worker> _workers;
    std::atomic<std::size_t> _written = 0, _skipped = 0;
    std::mutex _lock;
    /// By the place of the job, for them to be said in order.
    std::vector<std::pair<std::size_t, std::string>> _faults;
};

int extract(Options &options, const GlobalOptions &global) {
    const WQDecoderSet decoders = loadDecoders(global);
    options.selection.prepare(decoders);
    const DataSet dataSet = global.openDataSet(options.path);
    const int status = Extraction(options, dataSet, decoders).run();
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
