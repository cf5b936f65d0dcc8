// What can be set, and how what was set is read.
#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "base/enum_text.h"

namespace orvanta {

/// Settings by key as the store keeps them, any text: flags are "1" and "0", lists are JSON.
using SettingTexts = std::map<std::string, std::string>;

enum class Privacy {
  Full,
  Domain  ///< neither titles nor addresses are recorded
};

template <>
inline constexpr std::array<std::string_view, 2> kTexts<Privacy>{"full", "domain"};

/// The settings as the program goes by them; what each means is said in the table. Text that says
/// nothing usable gives the default, a number out of all reason the nearest one that is offered.
struct Settings {
  double idleThreshold = 0;  ///< seconds
  double minSpan = 0;        ///< seconds
  double minBlock = 0;       ///< seconds
  Privacy privacy = Privacy::Full;
  std::vector<std::string> excludedDomains;  ///< lower-cased
  std::vector<std::string> excludedApps;     ///< lower-cased
  int64_t retentionDays = 0;
  bool onboarded = false;
  bool paused = false;
  bool telemetry = false;
  std::string installId;

  /// A missing key gives the default.
  static Settings of(const SettingTexts& texts);
  /// To go by until they could be read: the defaults, but the user may have wanted less recorded.
  static Settings unread();

  /// Whether `domain` is an excluded one or lies under it.
  bool excludes(std::string_view domain) const;
  /// Whether an application of this name is an excluded one.
  bool excludesApp(std::string_view app) const;
};

struct Bounds {
  int64_t smallest = 0;
  int64_t largest = 0;
};

enum class Writer {
  User,    ///< by settings.set, too; in the store from the start
  Program  ///< only the program, for itself; not in the store before
};

/// A row of the table. A new setting is a row, and its member where the program goes by it.
struct Setting {
  const char* key;
  const char* fallback;  ///< the default
  std::variant<std::monostate, double Settings::*, int64_t Settings::*, bool Settings::*,
               Privacy Settings::*, std::vector<std::string> Settings::*, std::string Settings::*>
      member;
  Bounds offered;  ///< of a number: what the user is offered
  Bounds read;     ///< of a number: what is read as it is
  Writer writer;
  const char* about;
};

std::span<const Setting> settingTable();

/// Those that the user may write, with their defaults.
const SettingTexts& defaultSettings();

/// What of `texts` is read as something else than it says, by key, as the program reads it.
boost::json::object readAs(const SettingTexts& texts);

/// The table, for whoever offers settings to the user: of each {"key", "default", "kind",
/// "smallest", "largest" (null but for numbers), "writer"}, and "choices" where there are some.
boost::json::array describeSettings();

/// Key and text under which Database::setSettings stores a member's value.
SettingTexts::value_type stored(bool Settings::* member, bool value);
SettingTexts::value_type stored(std::string Settings::* member, std::string value);

}  // namespace orvanta
