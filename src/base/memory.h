#pragma once

namespace orvanta {

/// Hands back to the system what the heap holds free, and the pages of code and constants that only
/// the start or a report needed: they are clean, so a page that is needed again is mapped again
/// from the file, without a copy. A call costs about a millisecond; may be made from any thread.
void giveBackMemory();

}  // namespace orvanta
