#pragma once

#include <getopt.h>

/// What getopt_long has to say of a command line, in its own words. These quote the line, so they
/// are had from a copy that is fit for a terminal. The caller's own pass over `argv` begins anew
/// afterwards, and is silent.
void ZPComplainOfOptions(int argc, const char *const argv[], const char *shortOptions,
                         const option *longOptions);
