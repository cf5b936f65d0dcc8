#include "bridge/body.h"

#include <fmt/format.h>

#include <boost/json/serialize.hpp>

#include "base/number.h"
#include "base/text.h"
#include "bridge/app_error.h"
#include "storage/value.h"

namespace orvanta {

namespace json = boost::json;

std::string plainText(const json::value& value) {
  switch (value.kind()) {
    case json::kind::string:
      return std::string(value.get_string());
    case json::kind::bool_:
      return value.get_bool() ? "1" : "0";
    case json::kind::double_:
      return fmt::format("{}", value.get_double());
    default:
      return json::serialize(value);
  }
}

std::optional<std::string> Body::s(std::string_view key) const {
  const auto* value = find(key);
  if (!value || value->is_null()) return {};
  auto text = plainText(*value);
  return text.empty() ? std::nullopt : std::optional(std::move(text));
}

std::optional<std::string> Body::trimmed(std::string_view key) const {
  const auto text = s(key);
  return text ? std::optional(std::string(trimBlanks(*text))) : std::nullopt;
}

std::optional<int64_t> Body::i(std::string_view key) const {
  const auto* value = find(key);
  if (!value) return {};
  if (value->is_int64()) return value->get_int64();
  if (value->is_uint64() || value->is_double()) {
    // Unsigned is what no longer fits.
    const auto number = value->is_double() ? truncated(value->get_double()) : std::nullopt;
    if (!number) throw AppError("nombre hors limites : " + std::string(key));
    return number;
  }
  if (value->is_string()) {
    std::string_view text = value->get_string();
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    return parseNumber<int64_t>(text);
  }
  return {};
}

std::optional<double> Body::d(std::string_view key) const {
  const auto* value = find(key);
  if (!value || !value->is_number()) return {};
  return value->to_number<double>();
}

std::vector<int64_t> Body::ids(std::string_view key) const {
  std::vector<int64_t> ids;
  const auto* list = find(key);
  if (!list || !list->is_array()) return ids;
  for (const auto& id : list->get_array()) {
    if (!id.is_int64()) return {};
    ids.push_back(id.get_int64());
  }
  return ids;
}

std::optional<bool> Body::b(std::string_view key) const {
  const auto* value = find(key);
  return value && value->is_bool() ? std::optional(value->get_bool()) : std::nullopt;
}

}  // namespace orvanta
