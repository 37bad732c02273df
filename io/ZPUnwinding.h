#pragma once

/// Loads what the system's library needs to let an exception through functions of its own. It does
/// so by itself when the first one comes, and aborts where there is no memory left for it then.
void ZPPrepareUnwinding();
