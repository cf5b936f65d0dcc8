#include "reports/suggestions.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "classify/rule_set.h"

namespace orvanta {
namespace {

constexpr double kLeastSeconds = 1200;
constexpr std::size_t kShortestToken = 4;

bool saysNothing(const std::string& token) {
  constexpr std::array<std::string_view, 8> kStopWords{"https", "http",   "www",     "com",
                                                       "site",  "projet", "refonte", "client"};
  return std::find(kStopWords.begin(), kStopWords.end(), token) != kStopWords.end();
}

}  // namespace

std::set<std::string> tokens(std::string_view text) {
  std::set<std::string> found;
  for (auto& word : words(withoutAccents(lowerCase(text)))) {
    if (userCharacters(word) >= kShortestToken && !saysNothing(word)) found.insert(std::move(word));
  }
  return found;
}

SuggestionFinder::SuggestionFinder(const std::vector<Rule>& rules, const Projects& projects) {
  for (const auto& rule : rules) {
    if (rule.projectId) known_.insert(ruleKey(rule.field, rule.pattern));
  }
  for (const auto& [id, project] : projects) {
    if (project.archived) continue;
    auto marks = tokens(project.name);
    marks.insert(project.keywords.begin(), project.keywords.end());
    candidates_.push_back({&project, std::move(marks)});
  }
}

void SuggestionFinder::add(const Ev& ev) {
  if (ev.idle || ev.pid || ev.app.view() == kManualApp) return;
  if (ev.domain) {
    domains_[ev.domain].seconds += ev.duration();
  } else {
    apps_[ev.app].seconds += ev.duration();
  }
}

std::vector<Suggestion> SuggestionFinder::suggestions() const {
  // Distinct texts first, then by their lower-cased key: few strings are left to be lower-cased.
  Tally<Group> groups;
  const auto gather = [&](const Shares<TextSeconds>& shares, bool isDomain) {
    for (const auto& [text, seconds] : shares.entries()) {
      auto key = ruleKey(isDomain ? "domain" : "app", text.view());
      if (known_.contains(key)) continue;
      auto& group = groups[key];
      if (group.value.empty()) group.value = text.str();
      group.isDomain = isDomain;
      group.seconds += seconds;
    }
  };
  gather(domains_, true);
  gather(apps_, false);

  std::vector<Suggestion> list;
  for (const auto* group : groups.bySeconds()) {
    if (group->seconds < kLeastSeconds) break;
    const auto* project = resembling(group->value);
    if (!project) continue;
    list.push_back({group->value, group->isDomain ? "domain" : "app", group->seconds, project->id,
                    project->name, project->color});
  }
  return list;
}

const Project* SuggestionFinder::resembling(const std::string& value) const {
  const auto valueTokens = tokens(value);
  const auto lowered = lowerCase(value);
  const auto found =
      std::find_if(candidates_.begin(), candidates_.end(), [&](const Candidate& candidate) {
        return std::any_of(
            candidate.marks.begin(), candidate.marks.end(), [&](const std::string& mark) {
              return valueTokens.contains(mark) || lowered.find(mark) != std::string::npos;
            });
      });
  return found != candidates_.end() ? found->project : nullptr;
}

}  // namespace orvanta
