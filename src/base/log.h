// Where log lines go.
#pragma once

#include <functional>
#include <string>

namespace orvanta {

/// Takes one complete line, without line feed. May be called from any thread.
using Log = std::function<void(const std::string& line)>;

/// The system log: the journal under systemd, else standard error.
void systemLog(const std::string& line);

}  // namespace orvanta
