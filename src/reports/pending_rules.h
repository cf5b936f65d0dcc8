// Learnt rules that the user has not answered yet.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "reports/effect.h"
#include "storage/rule.h"

namespace orvanta {

struct PendingRule {
  enum class Doubt {
    None,
    Projects,  ///< what it is about lies in several projects
    More       ///< it moves more than it was taught
  };

  Rule rule;
  std::optional<std::string> project;  ///< its name; absent for a missing one
  double at = 0;                       ///< when it was learnt, Unix seconds
  double taught = 0;                   ///< seconds assigned by hand just as it assigns
  Doubt doubt = Doubt::None;
  Effect effect;  ///< of the rule, beside all others, on all that is recorded today
};

/// By id. Any thread; throws nothing.
std::vector<PendingRule> pendingRules(Database& db, const Calendar& calendar);

}  // namespace orvanta
