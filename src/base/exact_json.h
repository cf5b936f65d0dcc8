// JSON whose numbers are read exactly.
#pragma once

#include <boost/json/value.hpp>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvanta {

/// The value that `text` is, absent when it is not JSON or nests deeper. Boost's own parser reads
/// one decimal fraction in twenty-five a unit in the last place off, and an instant so read is not
/// the one that was written.
std::optional<boost::json::value> parseJson(std::string_view text, std::size_t deepest = 32);

/// JSON whose numbers are plain decimals, as shells and people read them: 636 for 6.36E2. Of a
/// number with more than forty digits nothing is changed.
std::string plainNumbers(std::string_view json);

}  // namespace orvanta
