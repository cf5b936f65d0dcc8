// Release numbers.
#pragma once

#include <string_view>

namespace orvanta {

/// Whether release `candidate` is newer than `current`: dotted whole numbers, compared one by one.
/// A missing number, and a piece that is none ("rc1"), counts as 0; empty pieces are left out. So
/// "1.10" is newer than "1.9", and "1.2" equals "1.2.0".
bool isNewer(std::string_view candidate, std::string_view current);

}  // namespace orvanta
