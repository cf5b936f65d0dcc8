// One classification rule.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/enum_text.h"
#include "storage/statement.h"

namespace orvanta {

/// Where in a span a rule looks.
enum class RuleField { App, Domain, Title, Url };

template <>
inline constexpr std::array<std::string_view, 4> kTexts<RuleField>{"app", "domain", "title", "url"};

/// Of a rule that was made from what an application's desktop file says: below all others.
inline constexpr int kAppRulePriority = -20;

/// A row of `rules`: spans whose `field` contains `pattern` get the category, the project or both.
struct Rule {
  int64_t id = 0;
  std::string field;  ///< of a RuleField; any other matches nothing
  std::string pattern;
  std::optional<std::string> category;
  std::optional<int64_t> projectId;
  int64_t priority = 0;  ///< the larger wins

  /// Whether it was made from a desktop file. Such a rule means the application of just this name,
  /// in any case ("Kate" is not in "Katex"), and gives a category where nothing else gives one.
  bool ofApplication() const {
    return priority == kAppRulePriority && field == textOf(RuleField::App) && category &&
           !projectId;
  }

  /// The columns that read() expects, in its order.
  static constexpr auto kColumns = "id, field, pattern, category, project_id, priority";
  static Rule read(const Cursor& row);
};

}  // namespace orvanta
