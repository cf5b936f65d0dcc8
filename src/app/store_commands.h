// `orvanta --check`, `--backup FILE`, `--take-all FILE`, `--restore FILE`: the store as a file,
// without the program.
#pragma once

#include <string>
#include <vector>

#include "storage/data_location.h"

namespace orvanta {

// Each yields the exit status: 0, 1 when something is not whole or could not be done, 2 when the
// words are wrong. What there is to say goes to standard output, in French, errors to standard
// error.

/// Checks the store and its backups thoroughly and says what is whole and what is not. Changes
/// nothing.
int checkCommand(const DataLocation& where = DataLocation::ofUser());

/// Writes a checked copy of the store to the new file `words[0]`, or into that folder under a name
/// with today's date. Never replaces a file. The program may run meanwhile.
int backupCommand(const std::vector<std::string>& words,
                  const DataLocation& where = DataLocation::ofUser());

/// The same of all that goes to another machine, see moving.h.
int takeAllCommand(const std::vector<std::string>& words,
                   const DataLocation& where = DataLocation::ofUser());

/// Puts the store `words[0]` in the place of today's, which is kept. Refused while the program
/// runs.
int restoreCommand(const std::vector<std::string>& words,
                   const DataLocation& where = DataLocation::ofUser());

}  // namespace orvanta
