#include "bridge/router.h"

#include <boost/json/serialize.hpp>
#include <optional>
#include <string>

#include "bridge/app_error.h"

namespace orvanta {
namespace {

namespace json = boost::json;

// Text of an argument; absent when missing, null or empty. What is no text counts as its writing.
std::optional<std::string> s(const json::object& body, std::string_view key) {
  const auto* value = body.if_contains(key);
  if (!value || value->is_null()) return {};
  if (!value->is_string()) return json::serialize(*value);
  if (value->get_string().empty()) return {};
  return std::string(value->get_string());
}

}  // namespace

json::value Router::handle(std::string_view route, const json::object& body) const {
  if (route == "day") return analytics_.day(s(body, "date"));
  if (route == "week") return analytics_.week(s(body, "date"));
  if (route == "recap") return analytics_.recap(s(body, "date"));
  if (route == "suggestions") return analytics_.suggestions();
  throw AppError("route inconnue : " + std::string(route));
}

}  // namespace orvanta
