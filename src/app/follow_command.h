// `orvanta --bar FORMAT`, `orvanta --watch`: follow the resident program.
#pragma once

#include "app/options.h"

namespace orvanta {

/// Prints a line when the program's state changes, and whenever it starts or ends, until standard
/// output is closed; with --once one line only. Waits for the session bus's word, so it costs
/// nothing meanwhile. Yields the exit status: 0, 1 without a session bus, 2 for wrong words.
int followCommand(const Options& options);

}  // namespace orvanta
