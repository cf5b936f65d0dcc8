// What the dashboard receives of a period: the one place that names its keys.
#pragma once

#include "bridge/report_json.h"
#include "reports/period.h"
#include "reports/period_days.h"

namespace orvanta {

void tag_invoke(ToJson, boost::json::value& json, const DateRange& range);
void tag_invoke(ToJson, boost::json::value& json, const PeriodReport& report);
void tag_invoke(ToJson, boost::json::value& json, const PeriodDays& days);

}  // namespace orvanta
