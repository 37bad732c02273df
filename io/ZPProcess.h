#pragma once

/// What a program's `main` calls first. A write to a reader that is gone, or past the limit on the
/// size of files, fails from then on instead of ending the process, so that it can be said and the
/// rest be done. Standard streams that the caller closed lead nowhere, or the first files that are
/// opened would take their numbers and with them what is logged.
///
/// In a program that calls it, it also runs before the constructors of static objects: these log.
__attribute__((constructor(101))) void ZPPrepareProcess();
