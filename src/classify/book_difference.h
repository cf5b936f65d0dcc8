// Which activity two sets of rules and projects may see differently.
#pragma once

#include <array>
#include <set>
#include <string_view>

#include "classify/pattern_search.h"
#include "classify/rule_book.h"
#include "storage/ev.h"

namespace orvanta {

/// Knows the patterns, keywords and projects in which two books differ: what has none of them
/// counts as the same by both. Immutable; any thread.
class BookDifference {
 public:
  BookDifference(const RuleBook& before, const RuleBook& after);

  /// Nothing counts as anything else.
  bool none() const { return none_; }
  /// Whether a span may. It may also not.
  bool concerns(const Ev& ev) const;

 private:
  static constexpr auto kFields = kTexts<RuleField>.size();

  void compareProjects(const RuleBook& before, const RuleBook& after);
  void compareRules(const RuleBook& before, const RuleBook& after);
  void add(const Rule& rule);
  void addKeywords(const Project& project);
  void look(std::size_t field, std::string_view pattern);

  std::array<PatternSearch, kFields> search_;
  std::array<bool, kFields> searches_{};
  std::set<int64_t> projects_;  // that are gone, are new or count as another category
  bool none_ = true;
};

}  // namespace orvanta
