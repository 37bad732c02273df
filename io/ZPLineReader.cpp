#include "io/ZPLineReader.h"

#include "io/ZPSystemLog.h"

#include <utility>

bool ZPLineReader::fail(std::string reason) {
    _failure = std::move(reason);
    _isAtEnd = true;
    return false;
}

bool ZPLineReader::next(std::string &line) {
    constexpr std::size_t kPieceSize = 1 << 16;
    line.clear();
    if (_isAtEnd)
        return false;
    for (;;) {
        const std::size_t end = _rest.find('\n');
        line += _rest.substr(0, end);
        if (line.size() > _longestLine)
            return fail(
                ZPFormat("line %zu is longer than %zu bytes", _lineCount + 1, _longestLine));
        if (end != _rest.npos) {
            _rest.remove_prefix(end + 1);
            break;
        }
        _buffer.resize(kPieceSize);
        ZPError error;
        const auto count = _file.read(_buffer, &error);
        if (!count)
            return fail(error.failureReason());
        _rest = std::string_view(_buffer).substr(0, *count);
        if (_size += *count; _size > _longestText)
            return fail(ZPFormat("longer than %zu bytes", _longestText));
        if (_isAtEnd = *count == 0; _isAtEnd)
            break;
    }
    ++_lineCount;
    return true;
}
