#pragma once

#include "data_tool/Command.h"
#include "decode/WQDecoderSet.h"

/// Folders where decoders are looked for, those that count more first: named on the command line,
/// the user's own, installed beside the program.
[[nodiscard]] std::vector<std::filesystem::path> decoderFolders(const GlobalOptions &options);

/// Makes the decoders of these folders inputs of the run, which nothing is written over.
void noteDecoders(const GlobalOptions &options);

/// The decoders of all these folders. What is wrong with one is said on standard error. Throws
/// CommandFailure when a folder that was named on the command line cannot be read.
[[nodiscard]] WQDecoderSet loadDecoders(const GlobalOptions &options);

/// What its author should know of a decoder's file, the file's name included; empty when all is
/// well.
[[nodiscard]] std::string remarkOn(const WQDecoderSet::File &file);
