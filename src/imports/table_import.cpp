#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "base/text.h"
#include "imports/import_times.h"
#include "imports/read_import.h"

namespace orvanta {
namespace {

constexpr std::size_t kMostColumns = 200;

struct Line {
  std::size_t number = 0;  // counted from 1
  std::vector<std::string> fields;
};

// Comma, semicolon or tab: what the first line has most of outside of quotes.
char separatorOf(std::string_view text) {
  constexpr std::array<char, 4> kMarks{',', ';', '\t', '|'};
  std::array<std::size_t, kMarks.size()> counts{};
  bool quoted = false;
  for (const char c : text) {
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    if (c == '\n') break;
    for (std::size_t i = 0; i < kMarks.size(); ++i) counts.at(i) += c == kMarks.at(i) ? 1 : 0;
  }
  return kMarks.at(
      static_cast<std::size_t>(std::max_element(counts.begin(), counts.end()) - counts.begin()));
}

// Reads line after line; a quoted field may hold line ends and doubled quotes.
class Table {
 public:
  explicit Table(std::string_view text) : text_(text), separator_(separatorOf(text)) {}

  bool next(Line& line) {
    if (at_ >= text_.size()) return false;
    line = {number_ + 1, {}};
    while (field(line)) {
    }
    return true;
  }

 private:
  // Whether another one follows on the line.
  bool field(Line& line) {
    std::string value;
    if (at_ < text_.size() && text_[at_] == '"') {
      quoted(value);
    }
    const auto end = std::min(text_.find_first_of(ends_, at_), text_.size());
    value += text_.substr(at_, end - at_);
    at_ = end;
    if (value.ends_with('\r')) value.pop_back();
    if (line.fields.size() < kMostColumns) line.fields.push_back(std::move(value));
    if (at_ >= text_.size()) return false;
    const bool more = text_[at_++] == separator_;
    if (!more) ++number_;
    return more;
  }

  void quoted(std::string& value) {
    for (++at_; at_ < text_.size(); ++at_) {
      const bool quote = text_[at_] == '"';
      if (quote && !(at_ + 1 < text_.size() && text_[at_ + 1] == '"')) {
        ++at_;
        return;
      }
      if (quote) ++at_;
      if (text_[at_] == '\n') ++number_;
      value += text_[at_];
    }
  }

  std::string_view text_;
  const char separator_;
  const std::string ends_{separator_, '\n'};
  std::size_t at_ = 0;
  std::size_t number_ = 0;
};

// What a bare number of the column counts.
double unitOf(std::string_view name) {
  constexpr double kMinute = 60;
  constexpr double kHour = 3600;
  for (const auto& word : words(lowerCase(withoutAccents(name)))) {
    if (word == "h" || word == "hours" || word == "heures" || word == "decimal") return kHour;
    if (word == "min" || word == "minutes") return kMinute;
  }
  return 1;
}

class TableReader {
 public:
  TableReader(const Calendar& calendar, Imported& imported)
      : calendar_(calendar), imported_(imported) {
    if (const auto at = imported.mapping.find(Column::Duration); at != imported.mapping.end()) {
      if (at->second < imported.columns.size()) unit_ = unitOf(imported.columns[at->second].name);
    }
  }

  void add(const Line& line) {
    const auto blank = [](const std::string& field) { return trimBlanks(field).empty(); };
    if (std::all_of(line.fields.begin(), line.fields.end(), blank)) return;
    auto start = moment(line, Column::Start, Column::StartDate);
    if (!start) return imported_.reject("début illisible", line.number);
    auto end = endOf(line, *start);
    if (!end) return imported_.reject("ni fin ni durée lisible", line.number);
    tellHoursApart(line, *start, *end);
    imported_.take({.start = *start,
                    .end = *end,
                    .app = text(line, Column::App),
                    .title = text(line, Column::Title),
                    .url = text(line, Column::Url),
                    .domain = text(line, Column::Domain),
                    .category = text(line, Column::Category),
                    .project = text(line, Column::Project)},
                   line.number);
  }

 private:
  std::string text(const Line& line, Column column) const {
    const auto at = imported_.mapping.find(column);
    if (at == imported_.mapping.end() || at->second >= line.fields.size()) return {};
    return line.fields[at->second];
  }

  std::optional<WrittenTime> time(const Line& line, Column column) const {
    return writtenTime(text(line, column), imported_.monthFirst);
  }

  std::optional<double> moment(const Line& line, Column column, Column dateColumn) const {
    auto written = time(line, column);
    if (!written) return {};
    if (written->instant) return written->instant;
    if (!written->date) {
      const auto date = time(line, dateColumn);
      if (date) written->date = date->date;
    }
    if (!written->date || !written->time) return {};
    return instantOf(calendar_, *written->date, *written->time);
  }

  std::optional<double> endOf(const Line& line, double start) const {
    if (const auto end = moment(line, Column::End, Column::EndDate)) return end;
    const auto written = time(line, Column::End);
    if (written && written->time && !written->date) {
      const auto day = calendar_.dateOf(start);
      const auto end = instantOf(calendar_, day, *written->time);
      return end < start ? instantOf(calendar_, day.plusDays(1), *written->time) : end;
    }
    const auto seconds = writtenDuration(text(line, Column::Duration), unit_);
    return seconds ? std::optional(start + *seconds) : std::nullopt;
  }

  // Of an hour that the clock shows twice, the duration says which one is meant.
  void tellHoursApart(const Line& line, double& start, double& end) const {
    constexpr double kRounding = 2;
    constexpr double kDay = 86400;
    const auto seconds = writtenDuration(text(line, Column::Duration), unit_).value_or(-1);
    if (seconds < 0 || seconds > kDay || std::abs(end - start) > kDay) return;
    if (std::abs(end - start - seconds) < kRounding) return;
    const auto showsSame = [&](double one, double other) {
      return std::abs(calendar_.wallSeconds(one) - calendar_.wallSeconds(other)) < kRounding;
    };
    if (showsSame(start + seconds, end)) {
      end = start + seconds;
    } else if (showsSame(end - seconds, start)) {
      start = end - seconds;
    }
  }

  const Calendar& calendar_;
  Imported& imported_;
  double unit_ = 1;
};

bool anyNeedsMonthFirst(std::string_view text, const Mapping& mapping) {
  Table table(text);
  for (Line line; table.next(line);) {
    for (const auto column : {Column::Start, Column::StartDate, Column::End, Column::EndDate}) {
      const auto at = mapping.find(column);
      if (at == mapping.end() || at->second >= line.fields.size()) continue;
      if (needsMonthFirst(line.fields[at->second])) return true;
    }
  }
  return false;
}

void readHeaders(std::string_view text, Imported& imported) {
  constexpr std::size_t kExamples = 3;
  constexpr std::size_t kLongest = 120;
  Table table(text);
  Line line;
  if (!table.next(line)) return;
  for (auto& field : line.fields) {
    imported.columns.push_back({firstCharacters(trimBlanks(field), kLongest), {}});
  }
  for (std::size_t row = 0; row < kExamples && table.next(line); ++row) {
    const auto columns = std::min(imported.columns.size(), line.fields.size());
    for (std::size_t i = 0; i < columns; ++i) {
      imported.columns[i].examples.push_back(firstCharacters(line.fields[i], kLongest));
    }
  }
}

const char* problemOf(const Mapping& mapping) {
  if (!mapping.contains(Column::Start)) return "colonne du début introuvable\u00a0: choisissez-la";
  if (!mapping.contains(Column::End) && !mapping.contains(Column::Duration)) {
    return "colonne de la fin ou de la durée introuvable\u00a0: choisissez-la";
  }
  return "";
}

}  // namespace

Imported readTable(std::string_view text, const Calendar& calendar, const ImportChoice& choice) {
  Imported imported{.kind = ImportKind::Csv, .problem = {}};
  readHeaders(text, imported);
  std::vector<std::string> names;
  for (const auto& column : imported.columns) names.push_back(column.name);
  imported.mapping = choice.mapping ? *choice.mapping : guessedMapping(names);
  imported.problem = problemOf(imported.mapping);
  if (!imported.problem.empty()) return imported;
  imported.monthFirst = choice.monthFirst.value_or(anyNeedsMonthFirst(text, imported.mapping));
  Table table(text);
  TableReader reader(calendar, imported);
  Line line;
  table.next(line);  // the names
  while (table.next(line)) reader.add(line);
  return imported;
}

}  // namespace orvanta
