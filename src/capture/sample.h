// One observation of what the user is doing.
#pragma once

#include <optional>
#include <string>

namespace orvanta {

/// The foreground activity at one moment.
struct Sample {
  std::string app;  ///< display name; "Inconnu" when the desktop gives none, "Inactif" when idle
  std::optional<std::string> bundle;
  std::optional<std::string> title;
  std::optional<std::string> url;     ///< of the active browser tab
  std::optional<std::string> domain;  ///< of `url`
  bool idle = false;

  friend bool operator==(const Sample&, const Sample&) = default;

  /// What makes two samples the same activity: "idle", or app|bundle|domain. Title and URL do not
  /// count: another document or another page of one site is the same activity.
  std::string key() const;

  /// The sample of nobody being there.
  static const Sample& idleSample();
};

/// The host of a web or file-server address, lower-cased, without one leading "www.". Absent when
/// the address does not begin with "http://", "https://" or "file://" written just so, does not
/// parse or names no host.
std::optional<std::string> domainOf(const std::optional<std::string>& url);

}  // namespace orvanta
