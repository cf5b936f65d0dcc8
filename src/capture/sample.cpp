#include "capture/sample.h"

#include <glib.h>

#include <memory>

#include "base/text.h"

namespace orvanta {

std::string Sample::key() const {
  if (idle) return "idle";
  return app + "|" + bundle.value_or("") + "|" + domain.value_or("");
}

const Sample& Sample::idleSample() {
  static const Sample sample{.app = "Inactif", .idle = true};
  return sample;
}

std::optional<std::string> domainOf(const std::optional<std::string>& url) {
  if (!url) return {};
  if (!url->starts_with("http://") && !url->starts_with("https://") &&
      !url->starts_with("file://")) {
    return {};
  }
  char* raw = nullptr;
  constexpr auto kFlags =
      static_cast<GUriFlags>(G_URI_FLAGS_PARSE_RELAXED | G_URI_FLAGS_ENCODED_PATH |
                             G_URI_FLAGS_ENCODED_QUERY | G_URI_FLAGS_ENCODED_FRAGMENT);
  const bool parsed = g_uri_split(url->c_str(), kFlags, nullptr, nullptr, &raw, nullptr, nullptr,
                                  nullptr, nullptr, nullptr) != FALSE;
  const std::unique_ptr<char, decltype(&g_free)> host(raw, g_free);
  if (!parsed || !host) return {};
  auto domain = lowerCase(host.get());
  constexpr std::string_view kWww = "www.";
  if (domain.starts_with(kWww)) domain.erase(0, kWww.size());
  if (domain.empty()) return {};
  return domain;
}

}  // namespace orvanta
