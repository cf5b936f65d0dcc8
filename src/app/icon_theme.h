// Where the program's icons are.
#pragma once

#include <string>

namespace orvanta {

/// The folder that holds our "hicolor" folder: of the installation that this program belongs to, or
/// of the build tree that it lies in. Empty when neither has it.
std::string iconThemePath();

}  // namespace orvanta
