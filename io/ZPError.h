#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <variant>

/// What a fallible operation reports: a domain, a code within it, and named details.
///
/// Operations take a `ZPError *error = nullptr` as their last argument and fill it only when it is
/// given and the operation failed.
struct ZPError {
    using Value = std::variant<std::uint64_t, std::string, std::shared_ptr<const ZPError>>;

    std::string domain;
    int code = 0;
    std::map<std::string, Value> userInfo;

    /// An error of the POSIX domain; `number` is an `errno` value.
    static ZPError posix(int number);

    /// The message under the failure-reason key, or, for the POSIX domain, the system's own words.
    std::string failureReason() const;

    /// One line for a log, e.g. `Error Domain=WQMapperErrorDomain Code=1 "Failed to ..."`, with the
    /// numbers of the user info that the reason does not name, in hexadecimal.
    std::string description() const;
};

inline constexpr char kZPPOSIXErrorDomain[] = "POSIXErrorDomain";
inline constexpr char NSLocalizedFailureReasonErrorKey[] = "NSLocalizedFailureReason";
inline constexpr char NSUnderlyingErrorKey[] = "NSUnderlyingError";

/// Stores `value` where the caller asked for errors; always false, so that a failing operation can
/// return it.
bool ZPFail(ZPError *error, ZPError value);

/// Raised by a read or a seek past the end of the data; records and archives catch it.
class ZPRangeException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Raised for data that is malformed in any other way.
class ZPGenericException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};
