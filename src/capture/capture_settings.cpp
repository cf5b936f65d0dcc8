#include "capture/capture_settings.h"

#include <algorithm>
#include <boost/json/parse.hpp>

#include "base/text.h"

namespace orvanta {
namespace {

std::vector<std::string> lowerCaseList(const std::string& json) {
  boost::system::error_code broken;
  const auto parsed = boost::json::parse(json, broken);
  std::vector<std::string> list;
  if (broken || !parsed.is_array()) return list;
  for (const auto& entry : parsed.get_array()) {
    if (!entry.is_string()) return {};
    list.push_back(lowerCase(std::string(entry.get_string())));
  }
  return list;
}

}  // namespace

CaptureSettings CaptureSettings::of(const Database::Settings& settings) {
  const CaptureSettings defaults;
  return {
      .idleThreshold = parseNumber(settings.at("idle_threshold")).value_or(defaults.idleThreshold),
      .minSpan = parseNumber(settings.at("min_span_seconds")).value_or(defaults.minSpan),
      .domainsOnly = settings.at("privacy_mode") == "domain",
      .excluded = lowerCaseList(settings.at("excluded_domains")),
  };
}

bool CaptureSettings::excludes(const std::string& domain) const {
  return std::any_of(excluded.begin(), excluded.end(), [&](const std::string& entry) {
    return domain == entry || domain.ends_with("." + entry);
  });
}

}  // namespace orvanta
