#pragma once

#include "io/ZPInputFile.h"

#include <string>

/// The lines of a text that is read piece by piece, so that neither its length nor that of a line
/// decides what memory it takes. What follows the last line end is a line too, if an empty one.
class ZPLineReader {
  public:
    /// Borrows the file.
    ZPLineReader(ZPInputFile &file, std::size_t longestLine, std::size_t longestText)
        : _file(file), _longestLine(longestLine), _longestText(longestText) {}

    /// False at the end and when the text cannot be read on, see `failure`.
    [[nodiscard]] bool next(std::string &line);
    /// How many lines were read; the number of the last one.
    std::size_t lineCount() const { return _lineCount; }
    /// Why the text ended too early; empty when it did not.
    const std::string &failure() const { return _failure; }

  private:
    bool fail(std::string reason);

    ZPInputFile &_file;
    const std::size_t _longestLine, _longestText;
    std::string _buffer;
    std::string_view _rest;
    std::size_t _lineCount = 0, _size = 0;
    bool _isAtEnd = false;
    std::string _failure;
};
