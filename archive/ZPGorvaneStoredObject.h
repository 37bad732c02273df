#pragma once

#include "io/ZPDataCursor.h"
#include "io/ZPLogger.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>

class ZPGorvaneClientData;

/// The base of every record decoded from an archive. A record decodes itself in a constructor that
/// takes a cursor and the client data, which it refers to but does not own.
class ZPGorvaneStoredObject {
  public:
    /// Whether a record's first word is its identifier; a record class says otherwise by its own
    /// constant of this name.
    static constexpr bool isIdentifierInData = true;

    ZPGorvaneStoredObject() = delete;
    /// Little endian: u32 identifier, where the record's class keeps it in the data.
    ZPGorvaneStoredObject(ZPDataCursor &cursor, ZPGorvaneClientData *clientData,
                          bool readsIdentifier = isIdentifierInData)
        : _identifier(readsIdentifier ? cursor.readLittleInt32() : 0), _clientData(clientData) {}
    /// A record that was not read from data and collects no dump.
    explicit ZPGorvaneStoredObject(std::uint32_t identifier)
        : _identifier(identifier), _collectsDump(false) {}
    virtual ~ZPGorvaneStoredObject() = default;
    ZPGorvaneStoredObject(ZPGorvaneStoredObject &&) = default;
    ZPGorvaneStoredObject &operator=(ZPGorvaneStoredObject &&) = default;

    std::uint32_t identifier() const { return _identifier; }
    void setIdentifier(std::uint32_t identifier) { _identifier = identifier; }
    ZPGorvaneClientData *clientData() const { return _clientData; }

    virtual const char *className() const { return "ZPGorvaneStoredObject"; }
    /// When true, every line of the dump is also sent to the system log.
    virtual bool shouldDebug() const { return false; }
    virtual std::string extension() const { return "txt"; }
    virtual std::optional<std::string> categoryName() const { return std::nullopt; }
    virtual bool shouldIncludeIndexInFilename() const { return false; }
    virtual std::string description() const;

    /// Adds a line to the record's dump.
    void appendFormat(const char *format, ...) __attribute__((format(printf, 2, 3)));
    /// Reads `count` 32-bit words and adds them as one line of hexadecimal numbers.
    void appendValues(std::uint32_t count, ZPDataCursor &fromCursor);
    /// The dump collected so far.
    const std::string &outputString() const;

    /// What the record is saved as: the lines collected, unless its class says otherwise.
    virtual std::string dumpText() const { return outputString(); }

    /// Writes the dump as UTF-8. With an empty one it fails with code 0 of
    /// "ZPGorvaneStorageErrorDomain".
    [[nodiscard]] virtual bool saveToPath(const std::filesystem::path &path,
                                          ZPError *error = nullptr) const;
    /// The same, and sets the file's times; a failure of that alone has code 0 with the POSIX error
    /// beneath it.
    [[nodiscard]] bool saveToPath(const std::filesystem::path &path, std::uint32_t mtime,
                                  ZPError *error) const;
    /// Sets access and modification time, in seconds since 1970.
    [[nodiscard]] static bool setModificationDate(std::uint32_t mtime,
                                                  const std::filesystem::path &onPath,
                                                  ZPError *error = nullptr);

  private:
    std::uint32_t _identifier;
    bool _collectsDump = true;
    ZPGorvaneClientData *_clientData = nullptr;
    /// Made with the first line: most records of a run never dump anything.
    std::unique_ptr<ZPLogger> _logger;
};

/// Logs what ended the decoding of a record, and reports it as code 5 of the storage domain.
void ZPReportDecodingException(const std::exception &exception, ZPError *error);
/// Warns of bytes that a record's class did not read.
void ZPWarnOfBytesLeft(const ZPGorvaneStoredObject &record, const ZPDataCursor &cursor);

/// Decodes one whole record of a class derived from ZPGorvaneStoredObject. None, with the cause
/// logged and in `error`, when the bytes do not make one; bytes left over are only warned of.
template <class Record>
[[nodiscard]] std::optional<Record>
ZPRecordWithData(std::span<const std::byte> data, ZPGorvaneClientData *clientData,
                 ZPError *error = nullptr, bool verbose = false) {
    ZPDataCursor cursor(data);
    cursor.setEnableLogging(verbose);
    std::optional<Record> record;
    try {
        record.emplace(cursor, clientData);
    } catch (const ZPRangeException &exception) {
        ZPReportDecodingException(exception, error);
    } catch (const ZPGenericException &exception) {
        ZPReportDecodingException(exception, error);
    }
    if (record && !cursor.isAtEnd())
        ZPWarnOfBytesLeft(*record, cursor);
    return record;
}

/// The same, on the heap, for records that are kept as their base class.
template <class Record>
[[nodiscard]] std::unique_ptr<Record> ZPNewRecordWithData(std::span<const std::byte> data,
                                                          ZPGorvaneClientData *clientData) {
    auto record = ZPRecordWithData<Record>(data, clientData);
    return record ? std::make_unique<Record>(std::move(*record)) : nullptr;
}
