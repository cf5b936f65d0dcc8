// Spans as a table for spreadsheet programs.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "base/calendar.h"
#include "storage/ev.h"
#include "storage/project.h"

namespace orvanta {

/// Writes classified spans as CSV: a byte order mark, so that spreadsheet programs see UTF-8, which
/// it is whatever the store holds, the names of the columns, and a line for each span with local
/// start and end, whole seconds, category, and in double quotes project, app, domain, title and
/// URL. Holds no more than some lines at a time.
class CsvWriter {
 public:
  using Write = std::function<void(std::string_view)>;

  /// `projects` outlive the writer.
  CsvWriter(const Calendar& calendar, const Projects& projects, Write write);

  void add(const Ev& ev);
  /// Writes what is still held. To be called once, last.
  void finish();

 private:
  void appendTime(double instant);
  int64_t offsetAt(int64_t second);
  void appendCategory(std::string_view category);
  void appendQuoted(std::string_view value);

  const Calendar calendar_;
  const Projects& projects_;
  Write write_;
  std::string held_;

  // Spans come by time.
  int64_t quarter_ = INT64_MIN / 2;
  int64_t quarterOffset_ = 0;  // at its beginning, seconds
  int64_t nextOffset_ = 0;     // and at that of the next
  int64_t day_ = INT64_MIN;
  std::string dayText_;
  int64_t second_ = INT64_MIN;  // one begins where the one before ends
  std::string secondText_;
};

}  // namespace orvanta
