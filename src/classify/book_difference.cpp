#include "classify/book_difference.h"

#include <array>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

#include "classify/classifier.h"

namespace orvanta {
namespace {

auto meaningOf(const Rule& rule) {
  return std::tie(rule.field, rule.pattern, rule.category, rule.projectId, rule.priority);
}

bool sameKeywords(const Project& a, const Project& b) {
  return a.archived == b.archived && (a.archived || a.keywords == b.keywords);
}

}  // namespace

// Where both have a project and not the same keywords, those of both are looked for.
RuleBook BookDifference::compare(const RuleBook& before, const RuleBook& after) {
  std::vector<Rule> rules;
  Projects projects;
  const std::array sides{std::pair(&before, &after), std::pair(&after, &before)};
  for (const auto& [book, other] : sides) {
    for (const auto& [id, project] : book->projects()) {
      const auto found = other->projects().find(id);
      const bool known = found != other->projects().end();
      const bool same = known && found->second.category == project.category;
      if (!same) projects_.insert(id);
      if (same && sameKeywords(project, found->second)) continue;
      none_ = false;
      if (project.archived) continue;
      inProjectsOnly_ = inProjectsOnly_ && project.keywords.empty();
      auto& keywords = projects.try_emplace(id, Project{.id = id}).first->second.keywords;
      keywords.insert(keywords.end(), project.keywords.begin(), project.keywords.end());
    }
  }
  for (const auto& [book, other] : sides) {
    std::map<int64_t, const Rule*> others;
    for (const auto& rule : other->rules()) others.emplace(rule.id, &rule);
    for (const auto& rule : book->rules()) {
      const auto found = others.find(rule.id);
      const bool same = found != others.end() && meaningOf(*found->second) == meaningOf(rule);
      if (!same) none_ = false;
      if (!same || (rule.projectId && projects_.contains(*rule.projectId))) rules.push_back(rule);
    }
  }
  inProjectsOnly_ = inProjectsOnly_ && rules.empty();
  return {std::move(rules), std::move(projects)};
}

bool BookDifference::concerns(const Ev& ev) const {
  if (ev.projectId && projects_.contains(*ev.projectId)) return true;
  constexpr std::array kTextOf{&Ev::app, &Ev::domain, &Ev::title, &Ev::url};
  bool opensPhrase = false;
  for (std::size_t field = 0; field < kTextOf.size(); ++field) {
    const auto text = ev.*kTextOf.at(field);
    if (!text) continue;
    const auto match = book_.look(static_cast<RuleField>(field), text.view());
    if (match.found.any() || match.own != RuleBook::kNone) return true;
    opensPhrase = opensPhrase || match.opensPhrase;
  }
  return opensPhrase && book_.phraseIn(Classifier::keywordText(ev)) != RuleBook::kNone;
}

}  // namespace orvanta
