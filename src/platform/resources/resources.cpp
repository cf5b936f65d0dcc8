#include "platform/resources/resources.h"

#include <gio/gio.h>

#include <memory>

extern "C" void platform_register_resource(void);  // NOLINT(readability-identifier-naming)

namespace orvanta {

std::string platformResource(const std::string& name) {
  static const bool registered = [] {
    platform_register_resource();
    return true;
  }();
  if (!registered) return {};
  const std::unique_ptr<GBytes, decltype(&g_bytes_unref)> bytes(
      g_resources_lookup_data(("/fr/quellvane/orvanta/platform/" + name).c_str(),
                              G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr),
      g_bytes_unref);
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
  return {data, size};
}

}  // namespace orvanta
