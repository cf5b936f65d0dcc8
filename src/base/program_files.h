// Where the files that belong to this program lie, in a build folder and when installed alike.
#pragma once

#include <filesystem>
#include <string_view>

namespace orvanta {

/// The program file that runs.
std::filesystem::path ownProgram();

/// Another program of ours: beside the one that runs, or in `../libexec` of it.
std::filesystem::path ownProgram(std::string_view name);

/// What belongs into the system's `share` folder: in `share` beside the folder of the program or
/// beside the program. `inside` is a path in there.
std::filesystem::path ownShared(const std::filesystem::path& inside);

/// A file or folder of ours: in the folder `orvanta` of that.
std::filesystem::path ownData(std::string_view name);

}  // namespace orvanta
