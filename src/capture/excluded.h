// Which addresses the user does not want to be recorded.
#pragma once

#include <algorithm>
#include <string_view>

#include "base/site.h"
#include "storage/settings.h"

namespace orvanta {

/// Whether the address shows an excluded site, also through a reader's view or as source text.
inline bool excluded(const Settings& settings, std::string_view address) {
  if (settings.excludedDomains.empty()) return false;
  const auto sites = sitesIn(address);
  return std::any_of(sites.begin(), sites.end(),
                     [&](const auto& site) { return settings.excludes(site); });
}

}  // namespace orvanta
