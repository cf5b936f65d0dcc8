#include "storage/settings.h"

#include <algorithm>
#include <array>
#include <boost/json/parse.hpp>
#include <boost/json/value_from.hpp>
#include <optional>

#include "base/number.h"
#include "base/site.h"
#include "base/text.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr int64_t kDay = 86400;      // seconds
constexpr int64_t kCentury = 36500;  // days
using Member = decltype(Setting::member);

constexpr Setting number(const char* key, Member member, const char* fallback, Bounds offered,
                         Bounds read, const char* about) {
  return {key, fallback, member, offered, read, Writer::User, about};
}

constexpr Setting other(const char* key, Member member, const char* fallback, const char* about) {
  return {key, fallback, member, {}, {}, Writer::User, about};
}

constexpr Setting ours(const char* key, const char* about) {
  return {key, "", {}, {}, {}, Writer::Program, about};
}

constexpr Setting kSettings[] = {
    number("idle_threshold", &Settings::idleThreshold, "180", {30, 7200}, {1, 100 * kDay},
           "Seconds without input after which nobody is there."),
    number("min_span_seconds", &Settings::minSpan, "10", {2, 600}, {0, kDay},
           "Seconds that an activity must last; what is shorter counts with the one before."),
    number("min_block_seconds", &Settings::minBlock, "60", {0, 3600}, {0, 100 * kDay},
           "Seconds; the day's list leaves shorter blocks out, the totals do not."),
    other("privacy_mode", &Settings::privacy, "full",
          "With \"domain\" neither titles nor addresses are recorded."),
    other("excluded_domains", &Settings::excludedDomains, "[]",
          "Of these sites and what lies under them only the browser is recorded."),
    number("retention_days", &Settings::retentionDays, "0", {0, kCentury}, {0, 1000 * kCentury},
           "Titles and addresses older than this are erased; 0 keeps all."),
    other("onboarded", &Settings::onboarded, "0", "The user has seen the welcome."),
    other("paused", &Settings::paused, "0", "Recording is paused."),
    other("telemetry", &Settings::telemetry, "0", "Whether anything is sent."),
    other("install_id", &Settings::installId, "",
          "The random name under which it is sent; empty while nothing is."),
    ours("rules_seeded", "The built-in rules have been made."),
    ours("app_rules", "Which applications have been given a rule of their own, as hashes."),
    ours("browser_perms", "How each browser answered its test."),
    ours("telemetry_first_sent", "The day of the first sending."),
    ours("telemetry_last_heartbeat", "The day of the last sending."),
    ours("telemetry_last_error", "The day of the last error that was sent."),
    ours("believed_time", "What the clock is known to have passed."),
    ours("last_input", "The span that goes on without input, and since when."),
    ours("store_notice", "What the user is still to be told of the store."),
    ours("store_erasing", "What is still to be erased from the backups."),
    ours("pause", "Since when recording is paused, until when, and whether the user was reminded."),
    ours("skipped_gaps", "Absences that the user wants to leave as they are."),
    ours("ask_absence", "Minutes of absence from which on the user is asked for what; 0: never."),
    {"excluded_apps",
     "[]",
     &Settings::excludedApps,
     {},
     {},
     Writer::Program,
     "Of these applications neither titles nor addresses are recorded."},
    ours("told_no_tray", "The user knows that this desktop has no tray."),
    ours("page_marks", "What the page keeps of its user's choices, a JSON object."),
    ours("highest_ids", "Up to which ids the history may bring rules, projects and goals back."),
};
constexpr const char* kKinds[] = {"text", "number", "number", "flag", "choice", "list", "text"};

// What a text is read as; `plain` when it says just that.
template <class T>
struct Reading {
  T value;
  bool plain;
};

template <class T>
Reading<T> readNumber(const Setting& row, std::string_view text) {
  const auto as = [](int64_t limit) { return static_cast<T>(limit); };
  const auto number = parseNumber<T>(text);
  if (!number) return {*parseNumber<T>(row.fallback), false};
  if (*number < as(row.read.smallest)) return {as(row.offered.smallest), false};
  if (*number > as(row.read.largest)) return {as(row.offered.largest), false};
  return {*number, true};
}

Reading<double> read(double Settings::*, const Setting& row, std::string_view text) {
  return readNumber<double>(row, text);
}

Reading<int64_t> read(int64_t Settings::*, const Setting& row, std::string_view text) {
  return readNumber<int64_t>(row, text);
}

Reading<bool> read(bool Settings::*, const Setting& /*row*/, std::string_view text) {
  return {text == "1", text == "1" || text == "0"};
}

Reading<Privacy> read(Privacy Settings::*, const Setting& /*row*/, std::string_view text) {
  const auto choice = parsed<Privacy>(text);
  return {choice.value_or(Privacy::Full), choice.has_value()};
}

Reading<std::vector<std::string>> read(std::vector<std::string> Settings::*, const Setting& /*row*/,
                                       std::string_view text) {
  boost::system::error_code broken;
  const auto parsed = json::parse(text, broken);
  if (broken || !parsed.is_array()) return {{}, false};
  std::vector<std::string> list;
  for (const auto& entry : parsed.get_array()) {
    if (!entry.is_string()) return {{}, false};
    list.push_back(lowerCase(entry.get_string()));
  }
  return {std::move(list), true};
}

Reading<std::string> read(std::string Settings::*, const Setting& /*row*/, std::string_view text) {
  return {std::string(text), true};
}

json::value jsonOf(Privacy privacy) {
  return json::value(textOf(privacy));
}

// Without a point where there is nothing behind it.
json::value jsonOf(double number) {
  const auto whole = static_cast<int64_t>(number);
  return static_cast<double>(whole) == number ? json::value(whole) : json::value(number);
}

template <class T>
json::value jsonOf(const T& value) {
  return json::value_from(value);
}

// Calls `use` with every row that has a member, and that.
template <class Use>
void forEachMember(const Use& use) {
  for (const auto& row : kSettings) {
    std::visit(
        [&](auto member) {
          if constexpr (!std::is_same_v<decltype(member), std::monostate>) use(row, member);
        },
        row.member);
  }
}

template <class T>
const char* keyOf(T Settings::* member) {
  return std::find_if(std::begin(kSettings), std::end(kSettings),
                      [&](const auto& row) { return row.member == decltype(row.member)(member); })
      ->key;
}

}  // namespace

Settings Settings::of(const SettingTexts& texts) {
  Settings settings;
  forEachMember([&](const Setting& row, auto member) {
    const auto text = texts.find(row.key);
    settings.*member = read(member, row, text == texts.end() ? row.fallback : text->second).value;
  });
  return settings;
}

Settings Settings::unread() {
  auto settings = of({});
  settings.privacy = Privacy::Domain;
  return settings;
}

bool Settings::excludes(std::string_view domain) const {
  const auto site = siteOf(domain);
  return std::any_of(excludedDomains.begin(), excludedDomains.end(),
                     [&](const auto& entry) { return liesUnder(site, siteOf(entry)); });
}

bool Settings::excludesApp(std::string_view app) const {
  if (excludedApps.empty()) return false;
  const auto name = lowerCase(app);
  return std::find(excludedApps.begin(), excludedApps.end(), name) != excludedApps.end();
}

std::span<const Setting> settingTable() {
  return kSettings;
}

const SettingTexts& defaultSettings() {
  static const auto defaults = [] {
    SettingTexts texts;
    for (const auto& row : kSettings) {
      if (row.writer == Writer::User) texts[row.key] = row.fallback;
    }
    return texts;
  }();
  return defaults;
}

json::object readAs(const SettingTexts& texts) {
  json::object otherwise;
  forEachMember([&](const Setting& row, auto member) {
    const auto text = texts.find(row.key);
    if (text == texts.end()) return;
    const auto reading = read(member, row, text->second);
    if (!reading.plain) otherwise[row.key] = jsonOf(reading.value);
  });
  return otherwise;
}

json::array describeSettings() {
  json::array rows;
  for (const auto& row : kSettings) {
    const std::string_view kind = kKinds[row.member.index()];
    const bool number = kind == "number";
    const auto limit = [&](int64_t value) { return number ? json::value(value) : nullptr; };
    json::object described{{"key", row.key},
                           {"default", row.fallback},
                           {"kind", kind},
                           {"smallest", limit(row.offered.smallest)},
                           {"largest", limit(row.offered.largest)},
                           {"writer", row.writer == Writer::User ? "user" : "program"}};
    if (kind == "choice") described["choices"] = json::value_from(kTexts<Privacy>);
    rows.push_back(std::move(described));
  }
  return rows;
}

SettingTexts::value_type stored(bool Settings::* member, bool value) {
  return {keyOf(member), value ? "1" : "0"};
}

SettingTexts::value_type stored(std::string Settings::* member, std::string value) {
  return {keyOf(member), std::move(value)};
}

}  // namespace orvanta
