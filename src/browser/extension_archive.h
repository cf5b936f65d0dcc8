// The browser extension as one file, as stores and Firefox take it.
#pragma once

#include <map>
#include <string>

namespace orvanta {

/// The bytes of a zip archive of these files, names in ASCII to contents. They are the same
/// wherever and whenever it is made: sorted, not compressed, without times, owners and modes.
std::string archiveOf(const std::map<std::string, std::string>& files);

}  // namespace orvanta
