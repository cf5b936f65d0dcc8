// The rules and projects that a request classifies with.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "storage/database.h"
#include "storage/project.h"
#include "storage/rule.h"
#include "storage/transaction.h"

namespace orvanta {

/// All rules in matching order: the higher priority first, then the longer pattern, then the older
/// rule; a priority that is no integer is where SQLite has it, NULL last. `whole` becomes false
/// when not all of them could be read.
std::vector<Rule> loadRules(Database& db, bool* whole = nullptr);

/// As the transaction has left them.
std::vector<Rule> loadRules(Transaction& change);

/// How many of loadRules() come before a rule that would be saved now, with priority 0.
std::size_t placeOf(Database& db, const Rule& saved);

/// What two rules of the same field and pattern share, in any case of letters.
std::string ruleKey(std::string_view field, std::string_view pattern);

/// Whether saving `saved` takes `other` away: it has the same field and pattern, in any case of
/// ASCII letters.
bool replaces(const Rule& saved, const Rule& other);

/// All projects, archived ones included, their clients spelled alike; `whole` as above.
Projects loadProjects(Database& db, bool* whole = nullptr);
/// As the transaction has left them.
Projects loadProjects(Transaction& change);

}  // namespace orvanta
