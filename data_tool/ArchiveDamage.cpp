#include "data_tool/ArchiveDamage.h"

#include "archive/ZPGorvaneArchiveCheck.h"

#include <algorithm>

namespace {

std::uint32_t identifierOf(const ZPGorvaneFinding *finding) {
    return *finding->identifier;
}

/// An entry in the wrong place makes its file hard to find, no worse.
bool isDamageOfFile(const ZPGorvaneFinding &finding) {
    return finding.identifier && finding.severity == ZPGorvaneFinding::Severity::error &&
           finding.kind != std::string_view(kZPGorvaneOrderFinding);
}

} // namespace

void ArchiveDamage::find() const {
    std::call_once(_isFound, [this] {
        _findings = ZPGorvaneArchiveCheck(_dataFile).run();
        for (const ZPGorvaneFinding &finding : _findings)
            if (isDamageOfFile(finding))
                _ofFiles.push_back(&finding);
        std::ranges::stable_sort(_ofFiles, {}, identifierOf);
    });
}

const ZPGorvaneFindings &ArchiveDamage::findings() const {
    find();
    return _findings;
}

const std::string *ArchiveDamage::causeOf(std::uint32_t identifier) const {
    find();
    const auto found = std::ranges::lower_bound(_ofFiles, identifier, {}, identifierOf);
    return found != _ofFiles.end() && identifierOf(*found) == identifier ? &(*found)->cause
                                                                         : nullptr;
}
