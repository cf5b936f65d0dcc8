// The user's settings.
#include <boost/json/value_from.hpp>

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
  for (const auto& [key, value] : body.object()) {
    if (value.is_null() || !defaultSettings().contains(key)) continue;
    values[key] = plainText(value);
  }
  const auto written = values.empty() ? Written::stored() : core.db.setSettings(values);
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
    {"settings.set", RouteKind::Write, set},
    {"onboarding.done", RouteKind::Write, onboardingDone},
};

}  // namespace

RouteTable settingsRoutes() {
  return kRoutes;
}

}  // namespace orvanta
