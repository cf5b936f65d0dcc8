// The table `changes`: what was changed by hand in the last 90 days, and what takes it back.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "storage/transaction.h"

namespace orvanta {

/// What the user is told of a change.
struct ChangeNote {
  std::string kind;    ///< "assign", "rule.save", …
  std::string label;   ///< French
  int64_t spans = 0;   ///< that it touched
  double seconds = 0;  ///< that they last
  std::vector<int64_t> learnedRules;
};

struct Change {
  int64_t id = 0;
  double at = 0;  ///< Unix seconds
  ChangeNote note;
  bool undone = false;
  bool undoable = false;  ///< what takes it back, or makes it again, is there
  std::string effect;     ///< JSON, as it was measured; "" where it was not
};

/// Its rows take a twentieth of the store and never more than 20 MB, but may take a MiB: the oldest
/// go first. Erased text leaves it with the spans, see Erasure. All but the first are for a
/// transaction that is open, and fail with it.
namespace change_log {

/// The kind of an entry that tells of an erasure.
inline constexpr auto kErase = "erase";

/// The newest first. Absent when not all can be read.
std::optional<std::vector<Change>> list(Database& db, double now, std::size_t most);

/// Whether a difference is small enough to be kept, so that it can be taken back.
bool fits(Transaction& change, const std::string& changeset);

/// Yields its id. A table that is missing loses the entry, -1, but not the transaction.
int64_t add(Transaction& change, double now, const ChangeNote& note, const std::string& changeset);

/// What a change was measured to do, without the titles in it.
void setEffect(Transaction& change, double now, int64_t id, const std::string& effect);

struct Kept {
  std::string changeset;
  std::string kind;
  bool undone = false;
};
/// Absent when there is no such change or nothing that takes it back.
std::optional<Kept> find(Transaction& change, int64_t id);

void setUndone(Transaction& change, int64_t id, bool undone);

/// The label of the latest change that touches what this one does: one that came later, or an
/// earlier one that was taken back; "" where there is none.
std::string inTheWay(Transaction& change, int64_t id, const std::string& changeset);

}  // namespace change_log
}  // namespace orvanta
