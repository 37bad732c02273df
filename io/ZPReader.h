#pragma once

/// Whether whoever read what is written to a descriptor has gone away; false where the system does
/// not tell.
[[nodiscard]] bool ZPIsReaderGone(int descriptor);
