// The scripts that run inside the desktop, as the program carries them.
#pragma once

#include <string>

namespace orvanta {

/// The text of the file of that name in this folder. The file exists.
std::string platformResource(const std::string& name);

}  // namespace orvanta
