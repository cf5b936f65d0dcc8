#include "bridge/sheet_files.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <ctime>

#include "base/display_text.h"
#include "base/text.h"
#include "bridge/body.h"
#include "reports/french_text.h"

namespace orvanta {

namespace json = boost::json;

namespace {

constexpr std::size_t kLongestName = 200;

const json::array& listAt(const json::object& object, std::string_view key) {
  static const json::array kNone;
  const auto* value = object.if_contains(key);
  return value && value->is_array() ? value->get_array() : kNone;
}

std::string textAt(const json::object& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  return value && !value->is_null() ? plainText(*value) : std::string();
}

const json::object& objectAt(const json::object& object, std::string_view key) {
  static const json::object kNone;
  const auto* value = object.if_contains(key);
  return value && value->is_object() ? value->get_object() : kNone;
}

std::string nameAt(const json::object& object, std::string_view key) {
  return oneLine(textAt(object, key), kLongestName);
}

class SheetCsv {
 public:
  SheetCsv(const json::object& sheet, bool french) : sheet_(sheet), french_(french) {}

  std::string text() {
    if (french_) csv_ = "\xEF\xBB\xBF";
    line({"Client", "Projet"}, columnNames(),
         {"Total", "Sans arrondi", "Tarif", "Montant", "Devise"});
    for (const auto& row : listAt(sheet_, "rows")) add(row.get_object());
    const auto& totals = objectAt(sheet_, "totals");
    const auto& amounts = listAt(totals, "amounts");
    const auto* one = amounts.size() == 1 ? &amounts.front().get_object() : nullptr;
    line({"", "Total"}, cells(totals),
         {hours(totals, "seconds"), hours(totals, "raw"), "", one ? money(*one, "cents") : "",
          one ? quoted(textAt(*one, "currency")) : ""});
    if (sheet_.contains("unassigned") && sheet_.at("unassigned").is_object()) {
      add(sheet_.at("unassigned").get_object());
    }
    return std::move(csv_);
  }

 private:
  using Fields = std::vector<std::string>;

  void line(const Fields& names, const Fields& cells, const Fields& rest) {
    std::string line;
    for (const auto& name : names) line += quoted(name) + separator();
    for (const auto& cell : cells) line += cell + separator();
    for (std::size_t i = 0; i < rest.size(); ++i) line += (i > 0 ? separator() : "") + rest[i];
    csv_ += line + "\r\n";
  }

  void add(const json::object& row) {
    const bool paid = !textAt(row, "cents").empty();
    line({nameAt(row, "client"), nameAt(row, "name")}, cells(row),
         {hours(row, "seconds"), hours(row, "raw"), money(row, "rate"), money(row, "cents"),
          paid ? quoted(textAt(row, "currency")) : ""});
  }

  Fields columnNames() const {
    Fields names;
    for (const auto& column : listAt(sheet_, "columns")) {
      const auto& dates = column.get_object();
      const auto from = textAt(dates, "from");
      const auto to = textAt(dates, "to");
      names.push_back(
          quoted(french_ ? textAt(dates, "label") : from + (from == to ? "" : "/" + to)));
    }
    return names;
  }

  Fields cells(const json::object& row) const {
    Fields fields;
    for (const auto& cell : listAt(row, "cells")) {
      fields.push_back(cell.is_object() ? hours(cell.get_object(), "seconds") : "");
    }
    return fields;
  }

  // What the sheet prints, in hours: a spreadsheet adds those up, and so cannot a minute's cells of
  // two decimals.
  std::string hours(const json::object& time, std::string_view key) const {
    constexpr int64_t kHundredth = 36;
    const auto* value = time.if_contains(key);
    const auto seconds = value && value->is_int64() ? value->get_int64() : 0;
    const char point = french_ ? ',' : '.';
    if (seconds % kHundredth == 0) return decimalHours(seconds, point);
    auto exact = fmt::format("{:.4f}", static_cast<double>(seconds) / (100 * kHundredth));
    std::replace(exact.begin(), exact.end(), '.', point);
    return exact;
  }

  std::string money(const json::object& row, std::string_view key) const {
    const auto* cents = row.if_contains(key);
    return cents && cents->is_int64() ? plainMoney(cents->get_int64(), french_ ? ',' : '.') : "";
  }

  std::string separator() const { return french_ ? ";" : ","; }

  static std::string quoted(std::string text) {
    constexpr std::string_view kFormulas = "=+-@\t\r";
    if (!text.empty() && kFormulas.find(text.front()) != std::string_view::npos) {
      text.insert(0, "'");
    }
    for (auto at = text.find('"'); at != std::string::npos; at = text.find('"', at + 2)) {
      text.insert(at, "\"");
    }
    return '"' + text + '"';
  }

  const json::object& sheet_;
  const bool french_;
  std::string csv_;
};

std::string padded(const std::string& text, std::size_t width, bool right) {
  const auto own = userCharacters(text);
  const std::string blanks(width > own ? width - own : 0, ' ');
  return right ? blanks + text : text + blanks;
}

// Title, one line a project under its client, totals, the rule.
class SheetTable {
 public:
  explicit SheetTable(const json::object& sheet) : sheet_(sheet) {}

  std::string text() {
    gather();
    std::vector<std::size_t> widths(lines_.front().size());
    for (const auto& line : lines_) {
      for (std::size_t i = 0; i < line.size(); ++i) {
        widths[i] = std::max(widths[i], userCharacters(line[i]));
      }
    }
    auto text = nameAt(sheet_, "title") + "\n\n";
    for (const auto& line : lines_) {
      std::string shown;
      for (std::size_t i = 0; i < line.size(); ++i) {
        shown += (i > 0 ? "  " : "") + padded(line[i], widths[i], i > 0);
      }
      shown.erase(shown.find_last_not_of(' ') + 1);
      text += shown + "\n";
    }
    return text + "\n" + textAt(sheet_, "rule") + "\n";
  }

 private:
  void gather() {
    lines_.push_back({"Projet", "Heures", "Sans arrondi", "Tarif", "Montant"});
    std::optional<std::string> client;
    for (const auto& one : listAt(sheet_, "rows")) {
      const auto& row = one.get_object();
      const auto name = nameAt(row, "client");
      if (client != name) lines_.push_back({name.empty() ? "Sans client" : name});
      client = name;
      add("  " + nameAt(row, "name"), row, textAt(row, "rate_text"), textAt(row, "amount"));
    }
    const auto& totals = objectAt(sheet_, "totals");
    std::string amounts;
    for (const auto& amount : listAt(totals, "amounts")) {
      amounts += (amounts.empty() ? "" : " + ") + textAt(amount.get_object(), "text");
    }
    add("Total", totals, "", amounts);
    const auto& rest = objectAt(sheet_, "unassigned");
    if (textAt(rest, "raw") != "0" && !rest.empty()) add("Sans projet, à ranger", rest, "", "");
  }

  void add(const std::string& name, const json::object& row, const std::string& rate,
           const std::string& amount) {
    lines_.push_back({name, textAt(row, "text"), textAt(row, "raw_text"), rate, amount});
  }

  const json::object& sheet_;
  std::vector<std::vector<std::string>> lines_;
};

std::string escaped(const std::string& text) {
  std::string safe;
  for (const char c : oneLine(text, kLongestName)) {
    if (c == '\\' || c == ';' || c == ',') safe += '\\';
    safe += c;
  }
  return safe;
}

// A content line, of at most 75 bytes each; no character is cut in two.
std::string folded(const std::string& line) {
  constexpr std::size_t kMost = 75;
  constexpr unsigned kTop = 0xC0;
  constexpr unsigned kContinues = 0x80;
  std::string text;
  std::size_t length = 0;
  for (std::size_t at = 0; at < line.size();) {
    auto end = at + 1;
    while (end < line.size() && (static_cast<unsigned char>(line[end]) & kTop) == kContinues) ++end;
    if (length + (end - at) > kMost) {
      text += "\r\n ";
      length = 1;
    }
    text += line.substr(at, end - at);
    length += end - at;
    at = end;
  }
  return text + "\r\n";
}

std::string utc(double instant) {
  return fmt::format("{:%Y%m%dT%H%M%SZ}",
                     fmt::gmtime(static_cast<std::time_t>(std::floor(instant))));
}

}  // namespace

std::string_view suffixOf(SheetFormat format) {
  if (format == SheetFormat::Ics) return "ics";
  return format == SheetFormat::Text ? "txt" : "csv";
}

std::string sheetFile(const json::object& sheet, SheetFormat format) {
  switch (format) {
    case SheetFormat::Csv:
      return SheetCsv(sheet, true).text();
    case SheetFormat::CsvPlain:
      return SheetCsv(sheet, false).text();
    case SheetFormat::Text:
      return SheetTable(sheet).text();
    default:
      return {};
  }
}

std::string calendarFile(const std::vector<SheetEntry>& entries, double now) {
  std::string text =
      "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Orvanta//Feuille de temps//FR\r\n";
  for (const auto& entry : entries) {
    text += "BEGIN:VEVENT\r\n";
    text += folded(fmt::format("UID:{}-{:.0f}@orvanta", entry.project, entry.start * 1000));
    text += folded("DTSTAMP:" + utc(now));
    text += folded("DTSTART:" + utc(entry.start));
    text += folded("DTEND:" + utc(std::ceil(entry.end)));
    text += folded("SUMMARY:" + escaped(entry.name));
    if (!entry.client.empty()) text += folded("CATEGORIES:" + escaped(entry.client));
    text += folded("DESCRIPTION:" + escaped(hoursInWords(entry.seconds) + " de travail"));
    text += "TRANSP:TRANSPARENT\r\nEND:VEVENT\r\n";
  }
  return text + "END:VCALENDAR\r\n";
}

}  // namespace orvanta
