// Spans as a table for spreadsheet programs.
#pragma once

#include <string>

#include "base/calendar.h"
#include "storage/ev.h"
#include "storage/project.h"

namespace orvanta {

/// Byte order mark, so that spreadsheet programs see UTF-8, and the names of the columns. No line
/// feed.
std::string csvHeader();

/// The line of one classified span, beginning with the line feed that ends the line before: local
/// start and end, whole seconds, category, and in double quotes project, app, domain, title, URL.
std::string csvLine(const Ev& ev, const Projects& projects, const Calendar& calendar);

}  // namespace orvanta
