// What a backup costs.
#pragma once

namespace orvanta::bench {

/// Prints bytes and seconds of a backup of one year and of ten, beside a bare copy of the file that
/// is written out as well.
void printBackupCost();

}  // namespace orvanta::bench
