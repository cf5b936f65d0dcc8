// How much memory an export takes.
#pragma once

namespace orvanta::bench {

/// Exports ten years and one day with the program itself and prints the peak memory of each.
void printExportMemory();

}  // namespace orvanta::bench
