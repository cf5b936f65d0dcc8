// Sockets with a name in the file system, for short talks that nobody waits long for.
#pragma once

#include <chrono>
#include <filesystem>

#include "base/owned_fd.h"

namespace orvanta {

/// A stream socket that never blocks and that children do not get. Holds nothing when there are no
/// more files to be had.
OwnedFd unixSocket();

/// Gives the socket its name. 0, or the errno.
int bindTo(const OwnedFd& socket, const std::filesystem::path& path);

/// Connects at once or, when who listens hangs and its queue is full, not at all. 0, or the errno.
int connectTo(const OwnedFd& socket, const std::filesystem::path& path);

/// Waits until there is something to read, or the other side is gone. False when `deadline` is over
/// before that.
bool waitToRead(const OwnedFd& socket, std::chrono::steady_clock::time_point deadline);

}  // namespace orvanta
