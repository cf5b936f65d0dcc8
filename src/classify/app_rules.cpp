#include "classify/app_rules.h"

#include <fmt/format.h>
#include <glib.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "base/text.h"
#include "classify/classifier.h"
#include "classify/defaults.h"
#include "classify/desktop_categories.h"
#include "classify/rule_set.h"

namespace orvanta {
namespace {

constexpr std::size_t kLongestName = 200;  // bytes
constexpr std::size_t kMostApps = 1000;
constexpr std::size_t kMarkSize = 16;
constexpr int64_t kFirstId = -1000;  // leaves room for the ids that SQLite gives after the largest

bool nameable(const std::string& app) {
  return !trimBlanks(app).empty() && app.size() <= kLongestName && app != kUnknownApp;
}

// What tells in the setting that an application has had its rule, also when the rule and with it
// the name are gone.
std::string markOf(const std::string& name) {
  const std::unique_ptr<char, decltype(&g_free)> hash(
      g_compute_checksum_for_string(G_CHECKSUM_SHA256, name.c_str(), -1), g_free);
  return std::string(hash.get()).substr(0, kMarkSize);
}

std::string marksIn(Transaction& change) {
  std::string marks;
  change.each("SELECT value FROM settings WHERE key='app_rules'", {},
              [&](const Cursor& row) { marks = row.str(0).value_or(""); });
  return marks;
}

// Whether a rule or a project decides what the application counts as.
bool isSorted(Transaction& change, const std::string& app) {
  std::vector<Rule> rules;  // in no order: it is no matter which of them decides
  change.each(fmt::format("SELECT {} FROM rules", Rule::kColumns), {},
              [&](const Cursor& row) { rules.push_back(Rule::read(row)); });
  auto projects = loadProjects(change);
  StringPool pool;
  Ev ev;
  ev.app = pool.intern(app);
  const auto book = std::make_shared<const RuleBook>(std::move(rules), std::move(projects));
  return Classifier(pool, book).decide(ev).categoryBy != Decision::By::None;
}

bool isBuiltIn(const std::string& name) {
  const auto rules = defaultRules();
  return std::any_of(rules.begin(), rules.end(), [&](const DefaultRule& rule) {
    return rule.field == RuleField::App && lowerCase(rule.pattern) == name;
  });
}

}  // namespace

void AppRules::seen(const std::string& app, const std::vector<std::string>& desktopCategories) {
  const auto category = categoryOf(desktopCategories);
  if (!category || !nameable(app)) return;
  if (generation_ != db_.generation()) settled_.clear();
  generation_ = db_.generation();
  const auto name = lowerCase(app);
  if (settled_.contains(name) || settled_.size() >= kMostApps) return;
  if (settle(app, name, *category)) settled_.insert(name);
}

bool AppRules::settle(const std::string& app, const std::string& name, Category category) {
  Transaction change(db_, Patience::None);
  if (!change) return false;
  auto marks = marksIn(change);
  const auto mark = markOf(name);
  const auto given = marks.size() / (kMarkSize + 1);
  const bool had = marks.find(mark) != std::string::npos;
  if (had || given >= kMostApps || isSorted(change, app) || isBuiltIn(name)) return bool{change};

  auto id = kFirstId - static_cast<int64_t>(given);
  change.each("SELECT min(id) - 1 FROM rules", {},
              [&](const Cursor& row) { id = std::min(id, row.int_(0).value_or(id)); });
  change.run(
      "INSERT INTO rules(id, field, pattern, category, priority, created) VALUES (?,?,?,?,?,?)",
      {id, textOf(RuleField::App), app, textOf(category), kAppRulePriority, clock_()});
  change.run("INSERT OR REPLACE INTO settings(key, value) VALUES ('app_rules', ?)",
             {marks + mark + " "});
  return bool{change.commit()};
}

}  // namespace orvanta
