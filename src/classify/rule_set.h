// The rules and projects that a request classifies with.
#pragma once

#include <vector>

#include "storage/database.h"
#include "storage/project.h"
#include "storage/rule.h"

namespace orvanta {

/// All rules in matching order: the higher priority first, then the longer pattern, then the older
/// rule.
std::vector<Rule> loadRules(Database& db);

/// What loadRules() would yield once `rule` was saved: it takes the place of those of its field and
/// pattern, in any case of ASCII letters, has priority 0 and is the newest.
std::vector<Rule> withRuleSaved(const std::vector<Rule>& rules, Rule rule);

/// All projects, archived ones included.
Projects loadProjects(Database& db);

}  // namespace orvanta
