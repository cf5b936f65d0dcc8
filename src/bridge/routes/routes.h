// The tables of routes by subject, and what their answers have in common.
#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/calendar.h"
#include "bridge/app_error.h"
#include "bridge/body.h"
#include "bridge/core.h"
#include "bridge/router.h"
#include "reports/date_range.h"

namespace orvanta {

using RouteTable = std::span<const Route>;
RouteTable programRoutes();
RouteTable reportRoutes();
RouteTable searchRoutes();
RouteTable sheetRoutes();
RouteTable projectRoutes();
RouteTable goalRoutes();
RouteTable importRoutes();
RouteTable ruleRoutes();
RouteTable eventRoutes();
RouteTable exclusionRoutes();
RouteTable momentRoutes();
RouteTable changeRoutes();
RouteTable settingsRoutes();
RouteTable permissionRoutes();
RouteTable storeRoutes();
RouteTable pageRoutes();

/// The kind of a change of settings, which the program follows when it is taken back.
inline constexpr std::string_view kSettingsChange = "settings";

/// Stores what the user chose, as a change that can be taken back.
Written chooseSettings(Core& core, const SettingTexts& chosen);

/// The answer of what was done.
inline boost::json::object done() {
  return {{"ok", true}};
}

/// The answer, which says so when nothing was stored.
boost::json::object told(Core& core, const Written& written, boost::json::object answer = done());

/// Erases what the store no longer holds from all that was copied from it; the answer says where
/// something is left.
template <class What>
boost::json::object erasedFromCopies(Core& core, const What& what, boost::json::object answer) {
  core.shell.refreshMenu();
  if (!core.keeper.erase(what)) {
    answer["message"] =
        "Effacé du fichier des données, mais une copie n’a pas pu être effacée\u00a0; "
        "le journal du système dit laquelle.";
  }
  return answer;
}

/// Rows as the store has them, column by column. Throws when they cannot be read: an empty list
/// would say that there are none.
boost::json::array rowsOf(Core& core, std::string_view sql);

/// What is wrong with the file of the data, or `otherwise`.
std::string troubleOr(Core& core, const std::string& otherwise);

/// The date of this name; today when it is absent or none.
Date dateIn(Core& core, const Body& body, std::string_view key = "date");

/// The dates "from" to "to", both included; today, or the first alone, where they are absent or
/// none. Throws when the last is before the first, or they are too many.
DateRange datesIn(Core& core, const Body& body);

/// "start" and "end"; throws without them.
TimeRange rangeIn(const Body& body);

std::optional<std::string> projectName(Core& core, const std::optional<int64_t>& id);

/// The answer to an export that could not be written, and why.
boost::json::object unwritten(const std::string& problem);

/// What the store keeps of a text: it ends at a NUL.
std::string_view storedText(const std::string& text);

/// The sentence, or null where there is none.
boost::json::value textOrNull(std::string_view text);

}  // namespace orvanta
