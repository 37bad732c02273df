#include "io/ZPError.h"

#include <system_error>
#include <utility>

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
