#include "io/ZPError.h"

#include <cstdio>
#include <system_error>
#include <utility>

namespace {

/// The numbers of the user info that a text does not have, each under the last part of its key:
/// ` UserInfo={FirstBlockOffset=00000400}`, or nothing.
std::string numbersNotIn(const std::string &text,
                         const std::map<std::string, ZPError::Value> &userInfo) {
    std::string numbers;
    for (const auto &[key, value] : userInfo) {
        const auto *number = std::get_if<std::uint64_t>(&value);
        if (number == nullptr)
            continue;
        char digits[17];
        std::snprintf(digits, sizeof digits, "%08llx", static_cast<unsigned long long>(*number));
        if (text.find(digits) == std::string::npos)
            numbers += (numbers.empty() ? " UserInfo={" : ", ") + key.substr(key.rfind('_') + 1) +
                       "=" + digits;
    }
    return numbers.empty() ? numbers : numbers + "}";
}

} // namespace

ZPError ZPError::posix(int number) {
    return {kZPPOSIXErrorDomain, number, {}};
}

std::string ZPError::failureReason() const {
    const auto reason = userInfo.find(NSLocalizedFailureReasonErrorKey);
    if (reason != userInfo.end())
        if (const auto *text = std::get_if<std::string>(&reason->second))
            return *text;
    return domain == kZPPOSIXErrorDomain ? std::generic_category().message(code) : std::string();
}

std::string ZPError::description() const {
    std::string text = "Error Domain=" + domain + " Code=" + std::to_string(code);
    if (const std::string reason = failureReason(); !reason.empty())
        text += " \"" + reason + "\"";
    text += numbersNotIn(text, userInfo);
    const auto underlying = userInfo.find(NSUnderlyingErrorKey);
    if (underlying != userInfo.end())
        if (const auto *cause = std::get_if<std::shared_ptr<const ZPError>>(&underlying->second))
            text += " (" + (*cause)->description() + ")";
    return text;
}

bool ZPFail(ZPError *error, ZPError value) {
    if (error != nullptr)
        *error = std::move(value);
    return false;
}
