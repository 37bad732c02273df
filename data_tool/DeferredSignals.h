#pragma once

/// While one lives, the first SIGINT, SIGTERM or SIGHUP does not end the process: work in hand can
/// be brought to a good end first. It takes its effect when this is destroyed; a second one of the
/// same kind does at once. A signal that was ignored before stays so. There may be one at a time.
class DeferredSignals {
  public:
    DeferredSignals();
    ~DeferredSignals();
    DeferredSignals(const DeferredSignals &) = delete;
    DeferredSignals &operator=(const DeferredSignals &) = delete;

    /// The number of the last signal that came, 0 when none did. Any thread may ask.
    [[nodiscard]] static int received();
};
