#pragma once

#include "io/ZPError.h"

#include <filesystem>

// What every output passes, so that nobody's file is lost: a program asks for all that it is going
// to write before it begins to work, and ZPAtomicFile asks when it opens a file and once more right
// before it gives it its name. Files are told by device and inode, so through any link; a file that
// is not there, by its folder and name. Devices, pipes and terminals hold nothing that could be
// lost and pass. All of it may be called by any thread.

/// The domain of what is refused here; the failure reason says why.
inline constexpr char kZPOutputErrorDomain[] = "ZPOutputErrorDomain";
enum class ZPOutputErrorCode { input = 1, otherOutput = 2, content = 3 };

/// Remembers a path as one that this run reads, for as long as the process lives. Nothing need be
/// there.
void ZPNoteInput(const std::filesystem::path &path);

/// Announces a file that this run is going to write under exactly this path. Two outputs of a run
/// are never the same file. False, with an error, where ZPMayWrite would be, or where the path was
/// announced before.
[[nodiscard]] bool ZPAnnounceOutput(const std::filesystem::path &path, ZPError *error = nullptr);

/// Forgets all inputs and outputs: for a process that makes one run after the other.
void ZPBeginNextRun();

/// False, with an error, when the path leads to an input, to an output that was announced under
/// another path, or to a file that the guard keeps.
[[nodiscard]] bool ZPMayWrite(const std::filesystem::path &path, ZPError *error = nullptr);

/// Why the regular file at a path must not be replaced for what it holds, or null when it may be.
using ZPOutputGuard = const char *(*)(const std::filesystem::path &path);
/// Installs the guard of a program. Without one the contents of a file do not matter.
void ZPSetOutputGuard(ZPOutputGuard guard);
