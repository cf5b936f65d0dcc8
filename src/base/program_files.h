// Where the files that belong to this program lie, in a build folder and when installed alike.
#pragma once

#include <filesystem>
#include <string_view>

namespace orvanta {

/// A program of ours: beside the one that runs, or in `../libexec` of it.
std::filesystem::path ownProgram(std::string_view name);

/// A file or folder of ours: in `share/orvanta` beside the program or beside its folder.
std::filesystem::path ownData(std::string_view name);

}  // namespace orvanta
