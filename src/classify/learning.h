// Rules learnt from what the user assigns by hand.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "base/clock.h"
#include "storage/transaction.h"

namespace orvanta {

/// A rule that was learnt.
struct LearnedRule {
  int64_t id = 0;
  std::string field;  ///< "domain" or "app"
  std::string pattern;
  std::optional<std::string> category;
  std::optional<std::string> project;  ///< its name; absent without one, and for a missing project
};

/// Turns a repeated habit into rules: call it after `category` and `projectId` were stored on the
/// spans `ids`, in the same transaction. For each of their domains (their applications where there
/// is no domain) that has no rule of the user and carries exactly this assignment on spans of at
/// least two local days, adds a rule and yields it. Learns nothing when both are absent, and
/// nothing for a category with a single quote in it: no category of ours has one. Moments that were
/// added by hand have nothing in common, so they teach nothing; nor does what cannot be read.
std::vector<LearnedRule> afterManualAssign(Transaction& change, const Clock& clock,
                                           const Calendar& calendar,
                                           const std::vector<int64_t>& ids,
                                           const std::optional<std::string>& category,
                                           std::optional<int64_t> projectId);

}  // namespace orvanta
