// Second, slow and obvious implementations to compare the real ones with.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/text.h"
#include "classify/rule_set.h"
#include "storage/ev.h"

namespace orvanta::test {

struct NaiveClassification {
  std::string cat;
  std::optional<int64_t> pid;
  bool manual = false;
  // Who says so.
  std::string catBy = "none";
  std::string pidBy = "none";
  std::optional<int64_t> catRule;
  std::optional<int64_t> pidRule;
  std::optional<std::string> keyword;
};

inline std::string naiveField(const Ev& ev, const std::string& field) {
  if (field == "app") return ev.app.str();
  if (field == "domain") return ev.domain.str();
  if (field == "title") return ev.title.str();
  if (field == "url") return ev.url.str();
  return "";
}

inline bool naiveMatch(const std::string& text, const std::string& pattern) {
  return !pattern.empty() && lowerCase(text).find(lowerCase(pattern)) != std::string::npos;
}

// Walks all rules for the span, then all keywords.
inline NaiveClassification naiveClassification(const Ev& ev, const std::vector<Rule>& rules,
                                               const Projects& projects) {
  if (ev.idle) return {.cat = "inactif", .catBy = "idle"};
  NaiveClassification told;
  std::optional<std::string> category;
  if (ev.category) category = ev.category.str();
  auto project = ev.projectId;
  told.manual = category || project;
  if (category) told.catBy = "manual";
  if (project) told.pidBy = "manual";
  const auto categoryOf = [&](int64_t id) {
    return projects.contains(id) ? projects.at(id).category : "nonclasse";
  };
  if (!category || !project) {
    for (const auto& rule : rules) {
      if (rule.ofApplication()) continue;
      if (!naiveMatch(naiveField(ev, rule.field), rule.pattern)) continue;
      if (!project && rule.projectId) {
        project = rule.projectId;
        told.pidBy = "rule";
        told.pidRule = rule.id;
      }
      if (!category && rule.category) {
        category = rule.category;
        told.catBy = "rule";
        told.catRule = rule.id;
      }
      if (category && project) break;
    }
  }
  if (!project) {
    std::string haystack;
    for (const auto text : {ev.title, ev.url, ev.domain}) {
      if (text) haystack += text.str() + " ";
    }
    haystack += ev.app.str();
    for (const auto& [id, candidate] : projects) {
      for (const auto& keyword : candidate.keywords) {
        if (project || candidate.archived || !naiveMatch(haystack, keyword)) continue;
        project = id;
        told.pidBy = "keyword";
        told.keyword = keyword;
      }
    }
  }
  if (!category) {
    category = project ? categoryOf(*project) : "nonclasse";
    if (project && projects.contains(*project)) told.catBy = "project";
    for (const auto& rule : rules) {
      const auto app = ev.app.str();
      if (told.catBy != "none" || !rule.ofApplication() || app.empty()) continue;
      if (lowerCase(rule.pattern) != lowerCase(app)) continue;
      category = rule.category;
      told.catBy = "rule";
      told.catRule = rule.id;
    }
  }
  told.cat = *category;
  told.pid = project;
  return told;
}

}  // namespace orvanta::test
