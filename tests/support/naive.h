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
  if (ev.idle) return {"inactif", {}, false};
  std::optional<std::string> category;
  if (ev.category) category = ev.category.str();
  auto project = ev.projectId;
  const bool manual = category || project;
  const auto categoryOf = [&](int64_t id) {
    return projects.contains(id) ? projects.at(id).category : "nonclasse";
  };
  if (!category || !project) {
    for (const auto& rule : rules) {
      if (!naiveMatch(naiveField(ev, rule.field), rule.pattern)) continue;
      if (!project && rule.projectId) project = rule.projectId;
      if (!category && rule.category) category = rule.category;
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
        if (!project && !candidate.archived && naiveMatch(haystack, keyword)) project = id;
      }
    }
  }
  if (!category) category = project ? categoryOf(*project) : "nonclasse";
  return {*category, project, manual};
}

}  // namespace orvanta::test
