#include "classify/rule_book.h"

#include <glib.h>

#include <algorithm>
#include <utility>

#include "base/text.h"

namespace orvanta {

RuleBook::RuleBook(std::vector<Rule> rules, Projects projects)
    : rules_(std::move(rules)), projects_(std::move(projects)) {
  for (Rank rank = 0; rank < rules_.size(); ++rank) {
    const auto& rule = rules_[rank];
    if (rule.ofApplication()) {
      ownRules_.try_emplace(lowerCase(rule.pattern), rank);
      continue;
    }
    const auto field = parsed<RuleField>(rule.field);
    if (!field) continue;
    search_.at(static_cast<std::size_t>(*field))
        .add(lowerCase(rule.pattern),
             {.category = rule.category ? rank : kNone, .project = rule.projectId ? rank : kNone});
  }
  for (const auto& [id, project] : projects_) {
    if (project.archived || project.keywords.empty()) continue;
    addKeywords(project, static_cast<Rank>(keywordProjects_.size()));
    keywordProjects_.push_back(id);
  }
  for (auto& search : search_) search.build();
}

void RuleBook::addKeywords(const Project& project, Rank rank) {
  for (const auto& keyword : project.keywords) {
    for (auto& search : search_) search.add(keyword, {.keyword = rank});
    auto space = keyword.find(' ');
    if (space != std::string::npos) phrases_.push_back({keyword, rank});
    for (; space != std::string::npos; space = keyword.find(' ', space + 1)) {
      phraseOpenings_.push_back(keyword.substr(0, space));
      // Of a letter beyond ASCII the last byte may depend on the case.
      const auto end = static_cast<unsigned char>(keyword[space - 1]);
      if (end >= 0x80) std::fill(endsOpening_.begin() + 0x80, endsOpening_.end(), true);
      endsOpening_[end] = endsOpening_[static_cast<uint8_t>(g_ascii_toupper(keyword[space - 1]))] =
          true;
    }
  }
}

RuleBook::Match RuleBook::look(RuleField field, std::string_view text) const {
  return {.found = search_[static_cast<std::size_t>(field)].search(text),
          .own = field == RuleField::App ? ownRule(text) : kNone,
          .opensPhrase = opensPhrase(text)};
}

RuleBook::Rank RuleBook::ownRule(std::string_view app) const {
  if (ownRules_.empty() || app.empty()) return kNone;
  const auto own = ownRules_.find(lowerCase(app));
  return own != ownRules_.end() ? own->second : kNone;
}

bool RuleBook::opensPhrase(std::string_view text) const {
  // Most texts are settled by their last byte.
  if (text.empty() || !endsOpening_[static_cast<uint8_t>(text.back())]) return false;
  const auto lowered = lowerCase(text);
  return std::any_of(phraseOpenings_.begin(), phraseOpenings_.end(),
                     [&](const std::string& opening) { return lowered.ends_with(opening); });
}

RuleBook::Rank RuleBook::phraseIn(std::string_view lowered) const {
  const auto first = std::find_if(phrases_.begin(), phrases_.end(), [&](const Phrase& phrase) {
    return lowered.find(phrase.text) != std::string_view::npos;
  });
  return first != phrases_.end() ? first->project : kNone;
}

}  // namespace orvanta
