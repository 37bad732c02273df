#pragma once

/// Ends a process that cannot go on, where it stands: files with temporary names are removed, the
/// reason is written to standard error after the program's name, and the status is that of failure.
/// Takes no memory and no lock, and touches nothing that other threads may be at.
[[noreturn]] void ZPAbandonProcess(const char *reason) noexcept;

/// The status of failure, 1 where nobody sets another. For a constructor of priority 102, so that
/// it holds before the static objects are made.
void ZPSetStatusOfFailure(int status);
[[nodiscard]] int ZPStatusOfFailure();
