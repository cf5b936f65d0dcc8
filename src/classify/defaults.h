// The rules that a fresh installation comes with.
#pragma once

#include <string_view>
#include <vector>

#include "base/clock.h"
#include "storage/category.h"
#include "storage/rule.h"
#include "storage/transaction.h"

namespace orvanta {

/// Below every rule of the user and every learnt one.
inline constexpr int kDefaultPriority = -10;

/// A built-in rule; it never names a project.
struct DefaultRule {
  RuleField field;
  std::string_view pattern;
  Category category;
};

/// The 287 built-in rules. No two have the same field and pattern, whatever the case.
std::vector<DefaultRule> defaultRules();

/// Adds those that are missing and yields their number. A rule with the same field and pattern (in
/// any case) suppresses the built-in one; existing rules are never changed.
int addDefaults(Transaction& change, const Clock& clock);

/// Writes the built-in rules into the store, once: later starts do nothing, so that a rule the user
/// deleted stays deleted. Yields the number of rules added, 0 when they could not be stored.
int seedDefaults(Database& db, const Clock& clock);

}  // namespace orvanta
