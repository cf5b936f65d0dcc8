#include "reports/csv.h"

#include <fmt/format.h>
#include <glib.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/text.h"
#include "storage/value.h"

namespace orvanta {
namespace {

constexpr std::size_t kHeldBytes = 65536;
constexpr int64_t kQuarter = 900;
constexpr int64_t kDay = 86400;

}  // namespace

CsvWriter::CsvWriter(const Calendar& calendar, const Projects& projects, Write write)
    : calendar_(calendar.pinned()), projects_(projects), write_(std::move(write)) {
  held_ =
      "\xEF\xBB\xBF"
      "debut;fin;duree_s;categorie;projet;app;domaine;titre;url";
}

void CsvWriter::add(const Ev& ev) {
  held_ += '\n';
  appendTime(ev.start);
  held_ += ';';
  appendTime(ev.end);
  const fmt::format_int seconds(truncated(ev.duration()).value_or(0));
  held_ += ';';
  held_.append(seconds.data(), seconds.size());
  appendCategory(ev.cat.view());
  const auto project = ev.pid ? projects_.find(*ev.pid) : projects_.end();
  appendQuoted(project != projects_.end() ? project->second.name : std::string_view());
  for (const auto text : {ev.app, ev.domain, ev.title, ev.url}) appendQuoted(text.view());
  if (held_.size() >= kHeldBytes) finish();
}

void CsvWriter::finish() {
  write_(held_);
  held_.clear();
}

void CsvWriter::appendTime(double instant) {
  // Years of four digits, whatever the store holds.
  instant = std::clamp(instant, -62'135'596'800.0, 253'402'214'399.0);
  const auto second = static_cast<int64_t>(std::floor(instant));
  if (second == second_) {
    held_ += secondText_;
    return;
  }
  second_ = second;
  const auto wall = second + offsetAt(second);
  const auto day = floorDivide(wall, kDay);
  if (day != day_) {
    day_ = day;
    dayText_ = calendar_.dateOf(instant).iso();
  }
  const auto clock = wall - day * kDay;
  constexpr int kMinute = 60;
  constexpr int kHour = 3600;
  const auto ten = [](int64_t number) { return static_cast<char>('0' + number / 10); };
  const auto one = [](int64_t number) { return static_cast<char>('0' + number % 10); };
  const auto hour = clock / kHour;
  const auto minute = clock % kHour / kMinute;
  const auto rest = clock % kMinute;
  secondText_.assign(dayText_).append(
      {' ', ten(hour), one(hour), ':', ten(minute), one(minute), ':', ten(rest), one(rest)});
  held_ += secondText_;
}

// What the wall clock is ahead of UTC. The same at both ends of a quarter of an hour, it is so in
// between; few clocks are ever changed within one.
int64_t CsvWriter::offsetAt(int64_t second) {
  const auto ask = [&](int64_t at) { return calendar_.wallSeconds(static_cast<double>(at)) - at; };
  const auto quarter = floorDivide(second, kQuarter);
  if (quarter != quarter_) {
    const auto start = quarter * kQuarter;
    quarterOffset_ = quarter == quarter_ + 1 ? nextOffset_ : ask(start);
    nextOffset_ = ask(start + kQuarter);
    quarter_ = quarter;
  }
  return quarterOffset_ == nextOffset_ ? quarterOffset_ : ask(second);
}

// One of ours, but for what other programs write.
void CsvWriter::appendCategory(std::string_view category) {
  constexpr auto kIsLetter = [](char c) { return c >= 'a' && c <= 'z'; };
  if (!std::all_of(category.begin(), category.end(), kIsLetter)) return appendQuoted(category);
  held_ += ';';
  held_ += category;
}

void CsvWriter::appendQuoted(std::string_view value) {
  // The store may hold any bytes, a table is UTF-8 without NULs.
  std::string readable;
  const auto size = static_cast<gssize>(value.size());
  if (size > 0 && g_utf8_validate(value.data(), size, nullptr) == FALSE) {
    readable = validUtf8(value);
    value = readable;
  }
  held_ += ";\"";
  for (auto quote = value.find('"'); quote != std::string_view::npos; quote = value.find('"')) {
    held_.append(value.substr(0, quote + 1)).push_back('"');
    value.remove_prefix(quote + 1);
  }
  held_.append(value).push_back('"');
}

}  // namespace orvanta
