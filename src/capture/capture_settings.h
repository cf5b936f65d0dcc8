// The settings that decide what is recorded.
#pragma once

#include <string>
#include <vector>

#include "storage/database.h"

namespace orvanta {

/// Text that does not parse gives the default.
struct CaptureSettings {
  double idleThreshold = 180;  ///< seconds without input after which nobody is there
  double minSpan = 10;         ///< seconds that an activity must last to be one
  /// Titles and addresses are not recorded. True until the settings could be read: the user may
  /// have wanted it so.
  bool domainsOnly = true;
  std::vector<std::string> excluded;  ///< domains, lower-cased

  static CaptureSettings of(const Database::Settings& settings);

  /// Whether `domain` is an excluded one or lies under it.
  bool excludes(const std::string& domain) const;
};

}  // namespace orvanta
