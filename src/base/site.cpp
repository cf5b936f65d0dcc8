#include "base/site.h"

#include <glib.h>
#include <unicode/idna.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "base/text.h"

namespace orvanta {
namespace {

constexpr std::string_view kMark = "://";

const icu::IDNA* idna() {
  static const std::unique_ptr<icu::IDNA> kRules = [] {
    UErrorCode status = U_ZERO_ERROR;
    return std::unique_ptr<icu::IDNA>(
        icu::IDNA::createUTS46Instance(UIDNA_NONTRANSITIONAL_TO_UNICODE, status));
  }();
  return kRules.get();
}

// A host that breaks the rules stays as it is.
std::string inLetters(const std::string& host) {
  if (isAscii(host) && host.find("xn--") == std::string::npos) return host;
  if (!idna()) return host;
  icu::IDNAInfo about;
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString letters;
  idna()->nameToUnicode(icu::UnicodeString::fromUTF8(host), letters, about, status);
  if (U_FAILURE(status)) return host;
  std::string text;
  letters.toUTF8String(text);
  return text;
}

std::string unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    constexpr int kHex = 16;
    const bool escape = text[i] == '%' && i + 2 < text.size() && g_ascii_isxdigit(text[i + 1]) &&
                        g_ascii_isxdigit(text[i + 2]);
    plain += escape ? static_cast<char>(g_ascii_xdigit_value(text[i + 1]) * kHex +
                                        g_ascii_xdigit_value(text[i + 2]))
                    : text[i];
    if (escape) i += 2;
  }
  return plain;
}

// What stands between the mark and the path.
std::string_view authorityAt(std::string_view address, std::size_t mark) {
  auto rest = address.substr(mark + kMark.size());
  rest.remove_prefix(std::min(rest.find_first_not_of("/\\"), rest.size()));
  return rest.substr(0, rest.find_first_of("/\\?# \t\n\"'<>&"));
}

std::string hostOf(std::string_view authority) {
  authority.remove_prefix(authority.rfind('@') + 1);  // of none the whole
  if (!authority.starts_with('[')) authority = authority.substr(0, authority.find(':'));
  return siteOf(unescaped(authority));
}

bool isScheme(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return g_ascii_isalnum(c) || c == '+' || c == '-' || c == '.';
  });
}

bool isPage(std::string_view scheme) {
  return scheme == "http" || scheme == "https" || scheme == "file" || scheme == "ftp";
}

}  // namespace

std::string siteOf(std::string_view host) {
  constexpr std::string_view kWww = "www.";
  if (const auto mark = host.find(kMark); mark != std::string_view::npos) {
    return hostOf(authorityAt(host, mark));
  }
  host = trimBlanks(host.substr(0, host.find('/')));
  // An address of IPv6 has brackets where a port may follow it.
  if (host.starts_with('[')) {
    host = host.substr(0, std::min(host.find(']'), host.size() - 1) + 1);
  } else if (std::count(host.begin(), host.end(), ':') > 1) {
    return siteOf("[" + std::string(host) + "]");
  } else {
    host = host.substr(0, host.find(':'));
  }
  auto site = inLetters(lowerCase(trimBlanks(host)));
  while (site.ends_with('.')) site.pop_back();
  if (site.starts_with(kWww)) site.erase(0, kWww.size());
  return site;
}

bool liesUnder(std::string_view site, std::string_view parent) {
  if (parent.empty() || !site.ends_with(parent)) return false;
  site.remove_suffix(parent.size());
  return site.empty() || site.ends_with('.');
}

std::vector<std::string> sitesIn(std::string_view address) {
  std::vector<std::string> sites;
  const auto text = trimBlanks(address);
  const auto first = text.find(':');
  const auto scheme =
      first == std::string_view::npos ? std::string() : lowerCase(text.substr(0, first));
  if (!isScheme(scheme)) return sites;
  const auto take = [&](std::string_view whole, std::size_t mark) {
    auto site = hostOf(authorityAt(whole, mark));
    if (!site.empty()) sites.push_back(std::move(site));
  };
  if (text.starts_with("file:///")) return sites;
  if (isPage(scheme)) {
    // Browsers take "https:\\host" and "https:host" for the same.
    const auto whole = scheme + std::string(kMark) + std::string(text.substr(first + 1));
    take(whole, scheme.size());
    return sites;
  }
  // What it wraps may be escaped, and that once more.
  auto whole = std::string(text);
  for (int times = 0; times < 3; ++times) {
    for (auto mark = whole.find(kMark); mark != std::string::npos;
         mark = whole.find(kMark, mark + 1)) {
      take(whole, mark);
    }
    whole = unescaped(whole);
  }
  return sites;
}

}  // namespace orvanta
