// The rules and projects of a store as they are now.
#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "classify/rule_book.h"
#include "storage/database.h"

namespace orvanta {

/// Reads them again only after something was written: a dashboard asks for many reports of one
/// state. Any thread.
class CurrentRules {
 public:
  /// `db` outlives it.
  explicit CurrentRules(Database& db) : db_(db) {}

  /// What of them can be read: nothing of a store that cannot be opened.
  std::shared_ptr<const RuleBook> book() const;
  /// Keeps none until they are asked for again.
  void release() const;

 private:
  Database& db_;
  mutable std::mutex mutex_;  // guards the next
  mutable std::optional<int64_t> revision_;
  mutable std::shared_ptr<const RuleBook> book_;
};

}  // namespace orvanta
