#pragma once

/// What comes first in a program, ahead of the constructors of static objects, since these log. A
/// write to a reader that is gone, or past the limit on the size of files, fails from then on
/// instead of ending the process, so that it can be said and the rest be done. Standard streams
/// that the caller closed lead nowhere, or the first files that are opened would take their numbers
/// and with them what is logged. An exception that nobody catches, on whatever thread, abandons the
/// process (see ZPAbandonProcess).
///
/// A library that goes wrong while a ZPForeignCall is underway does so too.
///
/// A program gets it by calling ZPEndProcess.
__attribute__((constructor(101))) void ZPPrepareProcess();

/// Ends a program whose work is done. What is still in memory goes back to the system as a whole,
/// which is faster than piece by piece. Where standard output could not be written, that is said,
/// and a status of success becomes that of failure.
[[noreturn]] void ZPEndProcess(int status);
