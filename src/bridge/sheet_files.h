// A timesheet as a file: for spreadsheets, for calendars, for a mail.
#pragma once

#include <boost/json/object.hpp>
#include <string>
#include <vector>

#include "base/enum_text.h"
#include "reports/sheet.h"

namespace orvanta {

enum class SheetFormat {
  Csv,  ///< as French spreadsheets read it: semicolons, decimal hours with a comma, a byte order
        ///< mark
  CsvPlain,  ///< commas, points, ISO dates
  Text,      ///< a table of plain text
  Ics        ///< the stretches of work, for calendars
};
template <>
inline constexpr std::array<std::string_view, 4> kTexts<SheetFormat>{"csv", "csv_plain", "text",
                                                                     "ics"};

/// "csv", "txt" or "ics".
std::string_view suffixOf(SheetFormat format);

/// The sheet, as sheetJson() made it, however long ago. Nothing for Ics, which is made of entries.
/// A name that a spreadsheet would take for a formula gets an apostrophe before it.
std::string sheetFile(const boost::json::object& sheet, SheetFormat format);

/// A calendar with one event for each entry (RFC 5545), made at `now`, Unix seconds.
std::string calendarFile(const std::vector<SheetEntry>& entries, double now);

}  // namespace orvanta
