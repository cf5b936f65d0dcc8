// An address as a browser, a page or a file of another program gives it.
#include "base/site.h"

#include "base/text.h"
#include "capture/excluded.h"
#include "capture/sample.h"
#include "fuzz/fuzz.h"

namespace orvanta::fuzz {
namespace {

Settings excluding(const std::string& site) {
  Settings settings;
  settings.excludedDomains = {lowerCase(site)};
  return settings;
}

void checkSite(const std::string& site) {
  holdUtf8(site, "a site is UTF-8");
  hold(!site.ends_with('.'), "a site has no dot at its end", site);
  hold(site.empty() || liesUnder(site, site), "a site lies under itself", site);
  hold(site.empty() || liesUnder("a." + site, site), "its parts lie under it", site);
}

}  // namespace

void target(std::string_view input) {
  const std::string address = validUtf8(input);
  const auto sites = sitesIn(address);
  for (const auto& site : sites) {
    checkSite(site);
    hold(excluded(excluding(site), address), "what an address shows can be excluded", site);
  }
  checkSite(siteOf(address));
  hold(!excluded(excluding(""), address), "nothing lies under nothing");
  const auto domain = domainOf(address);
  if (!domain) return;
  hold(!domain->empty() && *domain == lowerCase(*domain), "a domain is lower-case", *domain);
  holdUtf8(*domain, "a domain is UTF-8");
  // "http://./" names none.
  hold(siteOf(*domain).empty() || excluded(excluding(*domain), address),
       "the domain that is recorded can be excluded", *domain);
}

}  // namespace orvanta::fuzz
