#include "storage/settings.h"

#include <algorithm>
#include <array>
#include <boost/json/parse.hpp>
#include <boost/json/value_from.hpp>
#include <optional>

#include "base/number.h"
#include "base/text.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr int64_t kDay = 86400;      // seconds
constexpr int64_t kCentury = 36500;  // days
constexpr auto kUser = Writer::User;
constexpr auto kProgram = Writer::Program;

constexpr Setting kSettings[] = {
    {"idle_threshold",
     "180",
     &Settings::idleThreshold,
     {30, 7200},
     {1, 100 * kDay},
     kUser,
     "Seconds without input after which nobody is there."},
    {"min_span_seconds",
     "10",
     &Settings::minSpan,
     {2, 600},
     {0, kDay},
     kUser,
     "Seconds that an activity must last to be one; what is shorter counts with the one before."},
    {"min_block_seconds",
     "60",
     &Settings::minBlock,
     {0, 3600},
     {0, 100 * kDay},
     kUser,
     "Seconds; the day's list leaves shorter blocks out, the totals do not."},
    {"privacy_mode",
     "full",
     &Settings::privacy,
     {},
     {},
     kUser,
     "With \"domain\" neither titles nor addresses are recorded."},
    {"excluded_domains",
     "[]",
     &Settings::excludedDomains,
     {},
     {},
     kUser,
     "Of these sites and what lies under them only the browser is recorded."},
    {"retention_days",
     "0",
     &Settings::retentionDays,
     {0, kCentury},
     {0, 1000 * kCentury},
     kUser,
     "Titles and addresses older than this are erased; 0 keeps all."},
    {"onboarded", "0", &Settings::onboarded, {}, {}, kUser, "The user has seen the welcome."},
    {"paused",
     "0",
     &Settings::paused,
     {},
     {},
     kUser,
     "Nothing is recorded, from the next start on."},
    {"telemetry", "0", &Settings::telemetry, {}, {}, kUser, "Whether anything is sent."},
    {"install_id",
     "",
     &Settings::installId,
     {},
     {},
     kUser,
     "The random name under which it is sent; empty while nothing is."},
    {"rules_seeded", "", {}, {}, {}, kProgram, "The built-in rules have been made."},
    {"browser_perms", "", {}, {}, {}, kProgram, "How each browser answered its test."},
    {"telemetry_first_sent", "", {}, {}, {}, kProgram, "The day of the first sending."},
    {"telemetry_last_heartbeat", "", {}, {}, {}, kProgram, "The day of the last sending."},
    {"believed_time", "", {}, {}, {}, kProgram, "What the clock is known to have passed."},
    {"store_notice", "", {}, {}, {}, kProgram, "What the user is still to be told of the store."},
    {"store_erasing", "", {}, {}, {}, kProgram, "What is still to be erased from the backups."},
    {"told_no_tray", "", {}, {}, {}, kProgram, "The user knows that this desktop has no tray."},
};
constexpr const char* kKinds[] = {"text", "number", "number", "flag", "choice", "list", "text"};

// What a text is read as; `plain` when it says just that.
template <class T>
struct Reading {
  T value;
  bool plain;
};

template <class T>
Reading<T> within(const Setting& row, T number) {
  if (number < static_cast<T>(row.read.smallest))
    return {static_cast<T>(row.offered.smallest), false};
  if (number > static_cast<T>(row.read.largest))
    return {static_cast<T>(row.offered.largest), false};
  return {number, true};
}

template <class T>
Reading<T> readNumber(const Setting& row, std::string_view text) {
  if (const auto number = parseNumber<T>(text)) return within(row, *number);
  return {*parseNumber<T>(row.fallback), false};
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

// Calls `use` with the row, its member and what it is read as, for every row that has a member.
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
const char* keyOf(T Settings::*member) {
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
  return std::any_of(excludedDomains.begin(), excludedDomains.end(), [&](const auto& entry) {
    return domain == entry || domain.ends_with("." + entry);
  });
}

std::span<const Setting> settingTable() {
  return kSettings;
}

const SettingTexts& defaultSettings() {
  static const auto defaults = [] {
    SettingTexts texts;
    for (const auto& row : kSettings) {
      if (row.writer == kUser) texts[row.key] = row.fallback;
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
                           {"writer", row.writer == kUser ? "user" : "program"}};
    if (kind == "choice") described["choices"] = json::value_from(kTexts<Privacy>);
    rows.push_back(std::move(described));
  }
  return rows;
}

SettingTexts::value_type stored(bool Settings::*member, bool value) {
  return {keyOf(member), value ? "1" : "0"};
}

SettingTexts::value_type stored(std::string Settings::*member, std::string value) {
  return {keyOf(member), std::move(value)};
}

}  // namespace orvanta
