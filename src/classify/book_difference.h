// Which activity two sets of rules and projects may see differently.
#pragma once

#include <set>

#include "classify/rule_book.h"
#include "storage/ev.h"

namespace orvanta {

/// Knows the patterns, keywords and projects in which two books differ: what has none of them
/// counts as the same by both. Immutable; any thread.
class BookDifference {
 public:
  BookDifference(const RuleBook& before, const RuleBook& after) : book_(compare(before, after)) {}

  /// Nothing counts as anything else.
  bool none() const { return none_; }
  /// Whether a span may. It may also not.
  bool concerns(const Ev& ev) const;
  /// Projects that are gone, are new or count as another category.
  const std::set<int64_t>& projects() const { return projects_; }
  /// Whether only spans with one of projects() may: no rule and no keyword differs.
  bool inProjectsOnly() const { return inProjectsOnly_; }

 private:
  RuleBook compare(const RuleBook& before, const RuleBook& after);

  std::set<int64_t> projects_;
  bool none_ = true;
  bool inProjectsOnly_ = true;
  const RuleBook book_;  // of the rules and keywords in which they differ
};

}  // namespace orvanta
