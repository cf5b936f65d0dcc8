#include "bridge/request.h"

#include <algorithm>
#include <boost/json/serialize.hpp>
#include <cmath>
#include <new>
#include <utility>

#include "base/exact_json.h"
#include "base/text.h"
#include "bridge/app_error.h"

namespace orvanta {
namespace {

namespace json = boost::json;

bool isFinite(const json::value& value) {
  switch (value.kind()) {
    case json::kind::double_:
      return std::isfinite(value.get_double());
    case json::kind::array:
      return std::all_of(value.get_array().begin(), value.get_array().end(), isFinite);
    case json::kind::object:
      return std::all_of(value.get_object().begin(), value.get_object().end(),
                         [](const auto& member) { return isFinite(member.value()); });
    default:
      return true;
  }
}

// Whether it says that it failed, or that less was done than asked.
bool fellShort(const json::value& answer) {
  const auto* object = answer.if_object();
  if (!object) return false;
  const auto isFalse = [&](std::string_view key) {
    const auto* value = object->if_contains(key);
    return value && value->is_bool() && !value->get_bool();
  };
  const auto* error = object->if_contains("error");
  return (error && error->is_string()) || isFalse("stored") || isFalse("written") ||
         object->contains("incomplete");
}

}  // namespace

std::optional<Request> parseRequest(std::string_view text) {
  constexpr std::size_t kDeepest = 501;  // the envelope is a level of its own
  auto envelope = parseJson(text, kDeepest);
  if (!envelope || !envelope->is_object()) return {};
  auto& object = envelope->get_object();
  const auto* id = object.if_contains("id");
  const auto* path = object.if_contains("path");
  if (!id || !id->is_int64() || !path || !path->is_string()) return {};
  Request request{.id = id->get_int64(), .path = std::string(path->get_string())};
  auto* body = object.if_contains("body");
  if (body && body->is_object()) request.body = std::move(body->get_object());
  return request;
}

Answer answer(Router& router, std::string_view path, const json::object& body) {
  try {
    const auto value = router.handle(path, body);
    if (!isFinite(value)) return {"{}"};
    // Texts of the store may hold any bytes.
    return {validUtf8(json::serialize(value)), fellShort(value)};
  } catch (const AppError& error) {
    return failure(error.what());
  } catch (const std::bad_alloc&) {  // the capture goes on
    return failure("mémoire insuffisante pour cette réponse");
  } catch (const std::exception& error) {
    return failure(error.what());
  }
}

Answer failure(std::string_view message) {
  return {json::serialize(json::object{{"error", validUtf8(message)}}), true};
}

}  // namespace orvanta
