// The rules and projects that a request classifies with.
#pragma once

#include <vector>

#include "storage/database.h"
#include "storage/project.h"
#include "storage/rule.h"

namespace orvanta {

/// All rules in matching order: the higher priority first, then the longer pattern, then the older
/// rule. `whole` becomes false when not all of them could be read.
std::vector<Rule> loadRules(Database& db, bool* whole = nullptr);

/// In the order that loadRules() says.
std::vector<Rule> inMatchingOrder(std::vector<Rule> rules);

/// Whether saving `saved` takes `other` away: it has the same field and pattern, in any case of
/// ASCII letters.
bool replaces(const Rule& saved, const Rule& other);

/// All projects, archived ones included; `whole` as above.
Projects loadProjects(Database& db, bool* whole = nullptr);

}  // namespace orvanta
