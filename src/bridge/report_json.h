// What the dashboard receives of the reports and records: the one place that names their keys.
// Each is made by boost::json::value_from().
#pragma once

#include <boost/json/value.hpp>
#include <boost/json/value_from.hpp>
#include <optional>
#include <vector>

#include "classify/learning.h"
#include "classify/rule_origins.h"
#include "reports/effect.h"
#include "reports/explain.h"
#include "reports/pending_rules.h"
#include "reports/report.h"
#include "reports/rule_preview.h"
#include "storage/backups.h"
#include "storage/project.h"

namespace orvanta {

template <class T>
boost::json::value jsonOrNull(const std::optional<T>& value) {
  return value ? boost::json::value(*value) : boost::json::value(nullptr);
}

using ToJson = boost::json::value_from_tag;

void tag_invoke(ToJson, boost::json::value& json, const ProjectSum& sum);
void tag_invoke(ToJson, boost::json::value& json, const AppSum& sum);
void tag_invoke(ToJson, boost::json::value& json, const DomainSum& sum);
/// "active", "by_category", "by_project", "apps", "domains".
void tag_invoke(ToJson, boost::json::value& json, const Totals& totals);
void tag_invoke(ToJson, boost::json::value& json, const Project& project);
/// A report that does not show all that is recorded says so under "incomplete", in a French
/// sentence.
void tag_invoke(ToJson, boost::json::value& json, const DayReport& report);
void tag_invoke(ToJson, boost::json::value& json, const WeekReport& report);
void tag_invoke(ToJson, boost::json::value& json, const Recap& recap);
void tag_invoke(ToJson, boost::json::value& json, const Suggestion& suggestion);
void tag_invoke(ToJson, boost::json::value& json, const RulePreview& preview);
void tag_invoke(ToJson, boost::json::value& json, const Explanation& explanation);
void tag_invoke(ToJson, boost::json::value& json, const LearnedRule& rule);
void tag_invoke(ToJson, boost::json::value& json, const Effect& effect);
void tag_invoke(ToJson, boost::json::value& json, const PendingRule& pending);
void tag_invoke(ToJson, boost::json::value& json, const RuleSource& source);
void tag_invoke(ToJson, boost::json::value& json, const Backup& backup);

}  // namespace orvanta
