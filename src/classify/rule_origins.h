// Where rules came from.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/enum_text.h"
#include "storage/transaction.h"

namespace orvanta {

enum class RuleOrigin { User, Learned, Builtin, App };

template <>
inline constexpr std::array<std::string_view, 4> kTexts<RuleOrigin>{"user", "learned", "builtin",
                                                                    "app"};

struct RuleSource {
  int64_t rule = 0;  ///< its id
  RuleOrigin origin = RuleOrigin::User;
  std::optional<double> at;       ///< when it was made, Unix seconds
  std::optional<int64_t> change;  ///< that taught it, while the history has it
  bool pending = false;           ///< learnt, and not confirmed by the user
};

/// Of every rule, by id. The store tells which were learnt; the priority tells those of the program
/// and of applications, and all others are the user's. `whole` becomes false when not all could be
/// read. Any thread.
std::vector<RuleSource> ruleSources(Database& db, bool* whole = nullptr);

/// Notes that this rule, made at this time, was learnt; it is to be confirmed.
void noteLearned(Transaction& change, int64_t rule, double at);

/// Confirms those of these rules that were learnt.
void confirmRules(Transaction& change, const std::vector<int64_t>& rules);

/// To be called when rules have been deleted and before others are made: an id comes again.
void forgetGoneRules(Transaction& change);

}  // namespace orvanta
