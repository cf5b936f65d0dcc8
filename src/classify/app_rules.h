// Rules made from what the desktop files of applications say.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/clock.h"
#include "storage/category.h"
#include "storage/transaction.h"

namespace orvanta {

/// Gives an application that nothing sorts a rule of its own, see Rule::ofApplication, once: what
/// the user deletes or replaces stays so, since the store keeps which applications have had theirs
/// beside the rules, in the same file. A built-in rule of the same name that the user deleted is
/// such a wish, too.
///
/// The user has not made these rules, so they are no part of what can be taken back; and their ids
/// are negative and never used again, so that they are in the way of nothing that can. Used by one
/// thread.
class AppRules {
 public:
  /// `db` outlives it.
  AppRules(Database& db, Clock clock) : db_(db), clock_(std::move(clock)) {}

  /// To be called with every application that is looked at, by the name that its spans carry and
  /// the categories of its desktop file. Never waits: when the store is busy or cannot be written,
  /// the next call tries again. Names that are blank, very long or mean no application get none.
  void seen(const std::string& app, const std::vector<std::string>& desktopCategories);

 private:
  bool settle(const std::string& app, const std::string& name, Category category);

  Database& db_;
  const Clock clock_;
  std::set<std::string> settled_;  // names in small letters that need no look at the store
  int64_t generation_ = 0;         // of the file that they were settled in
};

}  // namespace orvanta
