#pragma once

#include "data_tool/Command.h"

#include <set>

/// An identifier as people write it: up to eight hexadecimal digits, with or without `0x`.
[[nodiscard]] std::optional<std::uint32_t> identifierInText(std::string_view text);

/// Which files of a data set a command is for: the options that `list`, `extract`, `check` and
/// `diff` have in common.
class FileSelection {
  public:
    /// Adds the options; they are read when the command line is.
    void addOptions(CLI::App &command);
    /// Makes sense of them, once the command line is read; borrows the decoders, whose names are
    /// classes too. Throws CommandFailure, a usage error, where there is none.
    void prepare(const WQDecoderSet &decoders);

    /// Says which options name files of which a data set has none, such as a type: mistyped, as a
    /// rule. False where there is one.
    [[nodiscard]] bool sayWhatIsNotThere(const DataSet &dataSet) const;

    /// Whether any option leaves files out.
    bool isRestricted() const { return _isRestricted; }
    bool includes(const Archive &archive, const ZPGorvaneFileEntry &entry) const {
        return !_isRestricted || matches(archive, entry);
    }

  private:
    struct Range {
        std::uint32_t first, last;
        bool contains(std::uint32_t identifier) const {
            return identifier >= first && identifier <= last;
        }
    };
    struct ListedFile {
        std::uint32_t identifier;
        /// Empty where the list does not say.
        std::string archive;
        auto operator<=>(const ListedFile &) const = default;
    };

    /// As they are written.
    std::vector<std::string> optionsWithoutFiles(const DataSet &dataSet) const;
    bool matches(const Archive &archive, const ZPGorvaneFileEntry &entry) const;
    bool matchesType(const Archive &archive, std::uint32_t identifier) const;
    void readIdentifiers();

    // As given.
    std::vector<std::string> _typeTexts, _rangeTexts, _blockTexts;
    std::string _largerText, _newerText, _listPath;
    bool _wantsDamaged = false, _wantsSound = false;
    // As understood.
    bool _isRestricted = false;
    const WQDecoderSet *_decoders = nullptr;
    std::vector<std::uint32_t> _types, _blocks;
    std::vector<std::string> _classes;
    std::vector<Range> _ranges;
    std::optional<std::uint64_t> _larger;
    std::optional<std::int64_t> _newer;
    std::optional<std::set<ListedFile>> _listed;
};
