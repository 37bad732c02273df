#pragma once

#include "web_tool/WebOptions.h"

/// Reads the archives and writes the page. The exit status: 0 when it was written, 1 when not; the
/// log says why, and no file is touched then.
int runWeb(const WebOptions &options);
