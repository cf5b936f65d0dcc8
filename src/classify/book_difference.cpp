#include "classify/book_difference.h"

#include <map>
#include <tuple>
#include <utility>

#include "base/text.h"

namespace orvanta {
namespace {

auto meaningOf(const Rule& rule) {
  return std::tie(rule.field, rule.pattern, rule.category, rule.projectId, rule.priority);
}

bool sameKeywords(const Project& a, const Project& b) {
  return a.archived == b.archived && (a.archived || a.keywords == b.keywords);
}

}  // namespace

BookDifference::BookDifference(const RuleBook& before, const RuleBook& after) {
  compareProjects(before, after);
  compareRules(before, after);
  for (auto& search : search_) search.build();
}

void BookDifference::compareProjects(const RuleBook& before, const RuleBook& after) {
  for (const auto& [book, other] : {std::pair(&before, &after), {&after, &before}}) {
    for (const auto& [id, project] : book->projects()) {
      const auto found = other->projects().find(id);
      const bool known = found != other->projects().end();
      const bool same = known && found->second.category == project.category;
      if (!same) projects_.insert(id);
      if (same && sameKeywords(project, found->second)) continue;
      none_ = false;
      addKeywords(project);
    }
  }
}

void BookDifference::compareRules(const RuleBook& before, const RuleBook& after) {
  for (const auto& [book, other] : {std::pair(&before, &after), {&after, &before}}) {
    std::map<int64_t, const Rule*> others;
    for (const auto& rule : other->rules()) others.emplace(rule.id, &rule);
    for (const auto& rule : book->rules()) {
      const auto found = others.find(rule.id);
      const bool same = found != others.end() && meaningOf(*found->second) == meaningOf(rule);
      if (!same) none_ = false;
      if (!same || (rule.projectId && projects_.contains(*rule.projectId))) add(rule);
    }
  }
}

void BookDifference::add(const Rule& rule) {
  const auto field = parsed<RuleField>(rule.field);
  if (field) look(static_cast<std::size_t>(*field), lowerCase(rule.pattern));
}

// One of several words may begin in one field and end in the next; its first word does not.
void BookDifference::addKeywords(const Project& project) {
  if (project.archived) return;
  for (const auto& keyword : project.keywords) {
    for (std::size_t field = 0; field < kFields; ++field) {
      look(field, std::string_view(keyword).substr(0, keyword.find(' ')));
    }
  }
}

void BookDifference::look(std::size_t field, std::string_view pattern) {
  search_.at(field).add(pattern, {.category = 0});
  searches_.at(field) = true;
}

bool BookDifference::concerns(const Ev& ev) const {
  if (ev.projectId && projects_.contains(*ev.projectId)) return true;
  const std::array<Text, kFields> texts{ev.app, ev.domain, ev.title, ev.url};
  for (std::size_t field = 0; field < kFields; ++field) {
    if (searches_.at(field) && texts.at(field) &&
        search_.at(field).search(texts.at(field).view()).any())
      return true;
  }
  return false;
}

}  // namespace orvanta
