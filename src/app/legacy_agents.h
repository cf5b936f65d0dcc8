// Clean-up after the program's former incarnation.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "base/log.h"

namespace orvanta {

/// Runs a program with these words and waits for its end, whatever it is.
using RunProgram = std::function<void(const std::vector<std::string>& words)>;

/// The real one; a program that cannot be started is passed over.
void runProgram(const std::vector<std::string>& words);

/// Stops and removes what started the former tracker at login: autostart entries and user services,
/// under the configuration folder `config` (`$XDG_CONFIG_HOME`). Logs what it has removed, swallows
/// every error, and does nothing once the files are gone.
void cleanupLegacyAgents(const std::filesystem::path& config, const RunProgram& run,
                         const Log& log);

}  // namespace orvanta
