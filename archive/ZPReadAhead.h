#pragma once

#include <cstddef>

/// Asks the system to bring the file's first `size` bytes into its page cache, in order and many at
/// a time, and returns when they have arrived; at once where they are there already.
///
/// A walk through an archive touches nearly all of it, but in an order of its own. Where the cache
/// is cold each step would wait for a read of its own somewhere in the file; on a rotating disk, or
/// over a network, that takes ten times as long as reading it from end to end.
///
/// It is a help and no more: what cannot be read is left to be found when it is needed. So are
/// files with more holes than data, and those that would fill half the memory.
void ZPReadAhead(int descriptor, std::size_t size);
