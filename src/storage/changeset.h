// The difference that writes make to rows, as SQLite's session extension records it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "storage/transaction.h"

namespace orvanta {

/// What a recorder looks at.
enum class Recorded {
  Activity,  ///< spans, projects, rules and where these came from, goals
  Settings   ///< those too, and settings: whatever is written there is taken back with the rest
};

/// Records what a transaction does to these tables, from its making until it ends.
class ChangeRecorder {
 public:
  explicit ChangeRecorder(Transaction& change, Recorded what = Recorded::Activity);

  /// The difference so far; empty when there is none. Fails the transaction when it cannot be told.
  std::string changeset();

 private:
  struct Delete {
    void operator()(sqlite3_session* session) const { sqlite3session_delete(session); }
  };
  Transaction& change_;
  std::unique_ptr<sqlite3_session, Delete> session_;
};

enum class Applied { All, Conflict, Failed };

/// Makes the difference again, or its opposite. Where a row is not as the difference found it, but
/// for a title or an address that was erased since, it is a conflict and nothing is done.
Applied apply(Transaction& change, const std::string& changeset, bool opposite);

/// Which columns of which rows a difference touches: their bits by table and key. A row that comes
/// or goes is touched in all of them. Also which names of projects it takes or frees.
using Touched = std::map<std::string, uint64_t, std::less<>>;
Touched touchedBy(const std::string& changeset);

/// Whether both touch the same of a row.
bool meet(const Touched& one, const Touched& other);

/// The spans that come or go with a difference, and with them what they show. Times are Unix
/// seconds.
struct HeldSpans {
  double from = 0;
  double to = 0;
  std::optional<double> titledFrom;  ///< the first end of those with a title or an address
};
/// Absent when there are none.
std::optional<HeldSpans> heldSpans(const std::string& changeset);

/// Ids of ours are below it, for a script would round those above, and after the largest there is
/// none: they are a stranger's.
inline constexpr int64_t kIdLimit = int64_t{1} << 53;

/// The highest ids of ours of the rules, projects and goals that come or go with a difference, by
/// table.
using HighestIds = std::map<std::string, int64_t, std::less<>>;
HighestIds highestIds(const std::string& changeset);

/// The texts of the rules, projects and settings that come, go or change.
std::vector<std::string> ownTexts(const std::string& changeset);

}  // namespace orvanta
