// Which site an address belongs to, however it is written.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// A host's name in the one form by which sites are compared: lower-case, "xn--…" as the letters it
/// stands for, without a dot at its end and without one leading "www."; an address of IPv6 in
/// brackets. Of an address its host.
std::string siteOf(std::string_view host);

/// Whether a site is `parent` or lies under it. Both as siteOf() yields them; nothing lies under
/// "".
bool liesUnder(std::string_view site, std::string_view parent);

/// The sites that an address shows: its host's, and of one that wraps another (view-source:, a
/// reader's view, blob:) those of what it wraps. Empty where it names no host.
std::vector<std::string> sitesIn(std::string_view address);

}  // namespace orvanta
