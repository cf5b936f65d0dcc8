// A store on its way to another machine: one file that leaves, and a file from anywhere that comes.
#pragma once

#include <filesystem>
#include <string>

#include "storage/store_copy.h"

namespace orvanta {

/// Writes all that the user would miss on another machine into one file, at once or not at all: a
/// checked copy of the store, which restoreStore() takes, without what is true of this machine
/// alone. Replaces `target` where that exists, but never the store. Blocks the caller, see
/// copyStore(); may be called from any thread while the store is open.
CopyResult takeAll(const std::filesystem::path& store, const std::filesystem::path& target,
                   const CopyOptions& options = {});

/// Makes a store of ours of a whole SQLite file that nobody has open and that may have been made by
/// anybody: views, triggers and indexes that are not ours are dropped from it. Yields why it cannot
/// be one, a French sentence without full stop: made by a later version, or a table that does not
/// take the rows that we write; "" when it can. Not to be called on the only copy of something.
std::string makeOurs(const std::filesystem::path& file);

}  // namespace orvanta
