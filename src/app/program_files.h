// The files that belong to the program.
#pragma once

#include <filesystem>
#include <string_view>

namespace orvanta {

/// The file of this name in the folder of the running program.
std::filesystem::path besideProgram(std::string_view name);

}  // namespace orvanta
