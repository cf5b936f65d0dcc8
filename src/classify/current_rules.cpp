#include "classify/current_rules.h"

#include <utility>

#include "classify/rule_set.h"
#include "storage/snapshot.h"

namespace orvanta {

std::shared_ptr<const RuleBook> CurrentRules::book() const {
  const Snapshot snapshot(db_);  // rules and projects are of one moment
  const auto revision = db_.scanRevision();
  const std::lock_guard lock(mutex_);
  if (revision && revision == revision_) return book_;
  bool whole = true;
  auto rules = loadRules(db_, &whole);
  book_ = std::make_shared<const RuleBook>(std::move(rules), loadProjects(db_, &whole));
  revision_ = whole ? revision : std::nullopt;
  return book_;
}

void CurrentRules::release() const {
  const std::lock_guard lock(mutex_);
  book_.reset();
  revision_.reset();
}

}  // namespace orvanta
