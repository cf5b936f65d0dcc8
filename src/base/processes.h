// What runs on this machine, by procfs (the manual page proc(5)).
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvanta {

/// The program file that the process runs: an absolute path, in the process's own view of the file
/// system. Empty when the process is gone or is somebody else's.
std::string programOf(int32_t pid);

/// What the process is called in lists of processes: the first 15 bytes of its program's name, or
/// what it calls itself. Empty when it is gone.
std::string commandNameOf(int32_t pid);

/// The words that the process was started with.
std::vector<std::string> commandLineOf(int32_t pid);

/// The paths of the files that it has open, as far as they are known to us, by the links to them.
std::map<std::string, std::string> openFilesOf(int32_t pid);

/// Absent when the process is gone.
std::optional<int32_t> parentOf(int32_t pid);

/// Seconds since the process was started; absent when it is gone.
std::optional<double> ageOf(int32_t pid);

/// All processes of this user, in the order of their numbers: about the order of their start.
std::vector<int32_t> ownProcesses();

}  // namespace orvanta
