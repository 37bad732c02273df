#include "archive/ZPGorvaneStoredObject.h"

#include "archive/ZPGorvaneBlockStorage.h"
#include "io/ZPAtomicFile.h"
#include "io/ZPSystemLog.h"

#include <cerrno>
#include <cstdarg>
#include <sys/time.h>

std::string ZPGorvaneStoredObject::description() const {
    return ZPFormat("<%s:%p> (id: %08x)", className(), static_cast<const void *>(this),
                    _identifier);
}

void ZPGorvaneStoredObject::appendFormat(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::string line = ZPFormatArguments(format, arguments);
    va_end(arguments);
    if (shouldDebug())
        ZPLog("%s", line.c_str());
    if (!_collectsDump)
        return;
    if (_logger == nullptr)
        _logger = std::make_unique<ZPLogger>();
    _logger->log("%s", line.c_str());
}

void ZPGorvaneStoredObject::appendValues(std::uint32_t count, ZPDataCursor &fromCursor) {
    std::string line;
    for (std::uint32_t index = 0; index < count; ++index)
        line += ZPFormat(index == 0 ? "%08x" : " %08x", fromCursor.readLittleInt32());
    appendFormat("%s", line.c_str());
}

const std::string &ZPGorvaneStoredObject::outputString() const {
    static const std::string nothing;
    return _logger != nullptr ? _logger->outputString() : nothing;
}

bool ZPGorvaneStoredObject::saveToPath(const std::filesystem::path &path, ZPError *error) const {
    const std::string text = dumpText();
    if (text.empty())
        return ZPFail(error, {kZPGorvaneStorageErrorDomain, ZPGorvaneStorageErrorGeneral, {}});
    return ZPWriteTextToPath(text, path, error);
}

bool ZPGorvaneStoredObject::saveToPath(const std::filesystem::path &path, std::uint32_t mtime,
                                       ZPError *error) const {
    if (!saveToPath(path, error))
        return false;
    ZPError cause;
    if (setModificationDate(mtime, path, &cause))
        return true;
    return ZPFail(error, {kZPGorvaneStorageErrorDomain,
                          ZPGorvaneStorageErrorGeneral,
                          {{NSUnderlyingErrorKey, std::make_shared<const ZPError>(cause)}}});
}

bool ZPGorvaneStoredObject::setModificationDate(std::uint32_t mtime,
                                                const std::filesystem::path &onPath,
                                                ZPError *error) {
    const timeval times[2] = {{static_cast<time_t>(mtime), 0}, {static_cast<time_t>(mtime), 0}};
    return utimes(onPath.c_str(), times) == 0 || ZPFail(error, ZPError::posix(errno));
}

void ZPReportDecodingException(const std::exception &exception, ZPError *error) {
    ZPLog("Caught exception: %s", exception.what());
    ZPFail(error, {kZPGorvaneStorageErrorDomain,
                   ZPGorvaneStorageErrorException,
                   {{NSLocalizedFailureReasonErrorKey, std::string(exception.what())}}});
}

void ZPWarnOfBytesLeft(const ZPGorvaneStoredObject &record, const ZPDataCursor &cursor) {
    ZPLog("[%08x] Warning: %llu bytes left", record.identifier(),
          static_cast<unsigned long long>(cursor.remaining()));
}
