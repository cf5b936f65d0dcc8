// A timesheet as it is shown, sent and kept: with every number that is printed also as its text, so
// that nobody has to work it out anew.
#pragma once

#include <boost/json/object.hpp>
#include <string>
#include <vector>

#include "bridge/body.h"
#include "reports/sheet.h"

namespace orvanta {

/// What a request asks for, over these dates. Throws AppError for a rounding that there is not.
SheetQuestion sheetQuestion(const Body& body, const DateRange& dates);

boost::json::object sheetJson(const Sheet& sheet);

/// One row for each line that is not what it was: of a sheet as sent and as it would be now. Each
/// has "kind" ("cell", "total", "amount", "name", "client", "terms", "rounding", "row_new",
/// "row_gone"), the project and the column that it is about, "sent", "now", and "text", a French
/// sentence.
boost::json::array sheetChanges(const boost::json::object& sent, const boost::json::object& now);

}  // namespace orvanta
