#include "reports/explain.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "reports/spans.h"

namespace orvanta {
namespace {

struct Group {
  Explanation explanation;
  TextTally titles;
  TextTally urls;
};

std::optional<std::string> keywordIn(const Ev& ev, const Project& project) {
  const auto text = Classifier::keywordText(ev);
  const auto& keywords = project.keywords;
  const auto found = std::find_if(keywords.begin(), keywords.end(), [&](const auto& keyword) {
    return text.find(keyword) != std::string::npos;
  });
  return found != keywords.end() ? std::optional(*found) : std::nullopt;
}

Explanation explained(const Ev& ev, const Decision& decision, const Projects& projects) {
  Explanation explanation{.category = decision.category.str(),
                          .categoryBy = decision.categoryBy,
                          .project = decision.project,
                          .projectBy = decision.projectBy};
  if (const auto* rule = decision.categoryRule) {
    explanation.categoryRule = rule->id;
    explanation.rules.push_back(*rule);
  }
  if (const auto* rule = decision.projectRule) {
    explanation.projectRule = rule->id;
    if (rule != decision.categoryRule) explanation.rules.push_back(*rule);
  }
  const auto project = decision.project ? projects.find(*decision.project) : projects.end();
  if (project != projects.end()) {
    explanation.projectName = project->second.name;
    if (decision.projectBy == Decision::By::Keyword) {
      explanation.keyword = keywordIn(ev, project->second);
    }
  }
  return explanation;
}

std::vector<TextShare> largest(const TextTally& texts) {
  constexpr std::size_t kMost = 3;
  std::vector<TextShare> list;
  for (const auto* text : texts.bySeconds(kMost)) list.push_back({text->key.str(), text->seconds});
  return list;
}

}  // namespace

Explanations explainSpans(Database& db, const std::vector<int64_t>& ids) {
  SpanReader reader(db);
  std::vector<Group> groups;
  std::map<std::tuple<std::string, Decision::By, std::optional<int64_t>, std::optional<int64_t>,
                      Decision::By, std::optional<int64_t>, std::optional<std::string>>,
           std::size_t>
      known;
  reader.eachOf(ids, [&](const Ev& ev) {
    auto explanation = explained(ev, reader.explain(ev), reader.projects());
    const auto [at, isNew] = known.try_emplace(
        {explanation.category, explanation.categoryBy, explanation.categoryRule,
         explanation.project, explanation.projectBy, explanation.projectRule, explanation.keyword},
        groups.size());
    if (isNew) groups.push_back({std::move(explanation), {}, {}});
    auto& group = groups[at->second];
    group.explanation.count.add(ev);
    if (ev.title) group.titles[ev.title].seconds += ev.duration();
    if (ev.url) group.urls[ev.url].seconds += ev.duration();
  });
  Explanations explanations{.whole = reader.whole()};
  for (auto& [explanation, titles, urls] : groups) {
    explanation.titles = largest(titles);
    explanation.urls = largest(urls);
    explanations.list.push_back(std::move(explanation));
  }
  std::stable_sort(
      explanations.list.begin(), explanations.list.end(),
      [](const Explanation& a, const Explanation& b) { return a.count.seconds > b.count.seconds; });
  return explanations;
}

}  // namespace orvanta
