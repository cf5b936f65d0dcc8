#include "tab/native_messages.h"

#include <boost/json/value.hpp>
#include <cstdint>
#include <cstring>

#include "base/cut.h"
#include "base/exact_json.h"

namespace orvanta {
namespace {

constexpr std::size_t kLongestUrl = 8192;

}  // namespace

std::optional<std::size_t> NativeMessages::length() const {
  uint32_t length = 0;
  if (bytes_.size() < sizeof length) return {};
  std::memcpy(&length, bytes_.data(), sizeof length);
  return length;
}

bool NativeMessages::broken() const {
  return length().value_or(0) > kLongest;
}

std::optional<std::string> NativeMessages::next() {
  const auto size = length();
  if (!size || broken() || bytes_.size() - sizeof(uint32_t) < *size) return {};
  auto message = bytes_.substr(sizeof(uint32_t), *size);
  bytes_.erase(0, sizeof(uint32_t) + *size);
  return message;
}

std::string nativeMessage(std::string_view json) {
  const auto size = static_cast<uint32_t>(json.size());
  std::string frame(sizeof size, '\0');
  std::memcpy(frame.data(), &size, sizeof size);
  return frame.append(json);
}

TabReport parseReport(std::string_view json) {
  const auto value = parseJson(json);
  if (!value || !value->is_object()) return {};
  const auto& report = value->get_object();
  const auto text = [&](const char* key) -> std::optional<std::string_view> {
    const auto* member = report.if_contains(key);
    if (!member || !member->is_string()) return {};
    return std::string_view(member->get_string().data(), member->get_string().size());
  };
  const auto url = text("url");
  const auto title = text("title");
  const auto* window = report.if_contains("window");
  if (!url || !title || !window || !window->is_number()) return {};
  if (url->find('\n') != std::string_view::npos) return {};
  return {ActiveTab{std::string(firstBytes(*url, kLongestUrl)),
                    std::string(firstBytes(*title, kLongestTitle))},
          window->to_number<double>()};
}

}  // namespace orvanta
