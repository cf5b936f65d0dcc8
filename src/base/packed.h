// Bytes that are kept for long, in less room.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orvanta {

/// `bytes`, deflated where that is smaller; one byte longer at most. Any thread, as the other.
std::string packed(std::string_view bytes);

/// What packed() was given. Absent for anything else.
std::optional<std::string> unpacked(std::string_view packed);

}  // namespace orvanta
