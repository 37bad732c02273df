#pragma once

#include <atomic>

/// As long as one lives, a call is underway into libraries that end the process, or fall over,
/// where they find no memory. In a program (see ZPPrepareProcess) that then ends with a line and a
/// status like any other want of memory, whichever of the process's threads it hits. One at a time.
class ZPForeignCall {
  public:
    /// `consequence`, a literal, is what the line says.
    explicit ZPForeignCall(const char *consequence) { _underway = consequence; }
    ~ZPForeignCall() { _underway = nullptr; }
    ZPForeignCall(const ZPForeignCall &) = delete;
    ZPForeignCall &operator=(const ZPForeignCall &) = delete;

    /// Null where none is. Safe in a signal handler.
    static const char *consequenceOfFault() { return _underway; }

  private:
    static inline std::atomic<const char *> _underway = nullptr;
};
