// The user's settings.
#include <boost/json/value_from.hpp>
#include <string_view>
#include <vector>

#include "bridge/change_labels.h"
#include "bridge/routes/routes.h"
#include "storage/settings.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::value get(Core& core, const Body& /*body*/) {
  return json::value_from(core.db.allSettings());
}

json::value describe(Core& /*core*/, const Body& /*body*/) {
  return describeSettings();
}

json::value set(Core& core, const Body& body) {
  SettingTexts values;
  SettingTexts chosen;
  for (const auto& [key, value] : body.object()) {
    if (value.is_null() || !defaultSettings().contains(key)) continue;
    (labels::nameOfSetting(key).empty() ? values : chosen)[key] = plainText(value);
  }
  auto written = values.empty() ? Written::stored() : core.db.setSettings(values);
  if (written && !chosen.empty()) written = chooseSettings(core, chosen);
  values.merge(chosen);
  core.tracker.startRetention();
  auto answer = done();
  if (auto otherwise = readAs(values); !otherwise.empty()) {
    answer["read_as"] = std::move(otherwise);
  }
  return told(core, written, std::move(answer));
}

json::value onboardingDone(Core& core, const Body& /*body*/) {
  return told(core, core.db.setSettings({stored(&Settings::onboarded, true)}));
}

constexpr Route kRoutes[]{
    {"settings.get", RouteKind::Read, get},
    {"settings.describe", RouteKind::Read, describe},
    {"settings.set", RouteKind::Write, set, ""},
    {"onboarding.done", RouteKind::Write, onboardingDone},
};

}  // namespace

Written chooseSettings(Core& core, const SettingTexts& chosen) {
  return core.db.setSettings(chosen, [&](const auto& write) {
    return core.history.record(
        [&](Transaction& change) {
          write(change);
          std::vector<std::string_view> keys;
          for (const auto& [key, value] : chosen) keys.push_back(key);
          return ChangeNote{.kind = std::string(kSettingsChange), .label = labels::settings(keys)};
        },
        Recorded::Settings);
  });
}

RouteTable settingsRoutes() {
  return kRoutes;
}

}  // namespace orvanta
