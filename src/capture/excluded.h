// Which addresses the user does not want to be recorded.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "base/site.h"
#include "capture/sample.h"
#include "storage/settings.h"

namespace orvanta {

/// Whether the address shows an excluded site, also through a reader's view or as source text.
inline bool excluded(const Settings& settings, std::string_view address) {
  if (settings.excludedDomains.empty()) return false;
  auto sites = sitesIn(address);
  // An odd address can be read in more than one way; this is the one that would be recorded.
  if (auto domain = domainOf(std::string(address))) sites.push_back(std::move(*domain));
  return std::any_of(sites.begin(), sites.end(),
                     [&](const auto& site) { return settings.excludes(site); });
}

}  // namespace orvanta
