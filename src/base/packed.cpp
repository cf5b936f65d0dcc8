#include "base/packed.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <memory>

#include "base/gobject_ref.h"

namespace orvanta {
namespace {

constexpr char kPlain = 0;
constexpr char kDeflated = 1;

// Absent when it cannot be converted, or does not end where it should.
std::optional<std::string> converted(GConverter* converter, std::string_view bytes) {
  constexpr std::size_t kRoom = 16384;
  std::string result;
  std::array<char, kRoom> room{};
  for (;;) {
    gsize read = 0;
    gsize written = 0;
    const auto state =
        g_converter_convert(converter, bytes.data(), bytes.size(), room.data(), room.size(),
                            G_CONVERTER_INPUT_AT_END, &read, &written, nullptr);
    if (state == G_CONVERTER_ERROR) return {};
    bytes.remove_prefix(read);
    result.append(room.data(), written);
    if (state == G_CONVERTER_FINISHED) break;
  }
  return bytes.empty() ? std::optional(std::move(result)) : std::nullopt;
}

}  // namespace

std::string packed(std::string_view bytes) {
  constexpr int kBest = 9;
  const Ref<GZlibCompressor> compressor(g_zlib_compressor_new(G_ZLIB_COMPRESSOR_FORMAT_RAW, kBest));
  const auto deflated = converted(G_CONVERTER(compressor.get()), bytes);
  if (deflated && deflated->size() < bytes.size()) return kDeflated + *deflated;
  return kPlain + std::string(bytes);
}

std::optional<std::string> unpacked(std::string_view packed) {
  if (packed.empty()) return {};
  const auto rest = packed.substr(1);
  if (packed.front() == kPlain) return std::string(rest);
  if (packed.front() != kDeflated) return {};
  const Ref<GZlibDecompressor> decompressor(g_zlib_decompressor_new(G_ZLIB_COMPRESSOR_FORMAT_RAW));
  return converted(G_CONVERTER(decompressor.get()), rest);
}

}  // namespace orvanta
