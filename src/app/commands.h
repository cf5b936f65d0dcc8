// What a command line has done in its own process, without the resident program.
#pragma once

#include <optional>

#include "app/options.h"

namespace orvanta {

/// Carries out the command that these options name, and yields the exit status; absent for those
/// that are the resident program's.
std::optional<int> runCommand(const Options& options);

/// Answers `--call` here, from the store and the desktop as they are; yields the exit status.
int answerHere(const Options& options);

/// For a `--call` that was the running Orvanta's to answer, and to which nothing came: it ended
/// meanwhile, and nobody knows what it has done. Yields the exit status.
int tellUnanswered();

/// Whether an Orvanta of this session is there to answer.
bool runningElsewhere();

}  // namespace orvanta
