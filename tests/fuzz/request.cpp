// A line of the page, or of `orvanta --call -`: numbers, texts and nesting as anybody writes them.
#include "bridge/request.h"

#include <boost/json/serialize.hpp>
#include <cmath>

#include "base/exact_json.h"
#include "bridge/app_error.h"
#include "bridge/body.h"
#include "fuzz/fuzz.h"

namespace orvanta::fuzz {
namespace {

namespace json = boost::json;

// JSON has one kind of number, and no infinity.
bool same(const json::value& one, const json::value& other) {
  if (one.is_number() && other.is_number()) {
    const auto a = one.to_number<double>();
    const auto b = other.to_number<double>();
    return a == b || !std::isfinite(a) || !std::isfinite(b);
  }
  if (one.kind() != other.kind()) return false;
  if (const auto* list = one.if_array()) {
    return std::equal(list->begin(), list->end(), other.get_array().begin(),
                      other.get_array().end(), same);
  }
  const auto* object = one.if_object();
  if (!object) return one == other;
  return object->size() == other.get_object().size() &&
         std::all_of(object->begin(), object->end(), [&](const auto& member) {
           const auto* found = other.get_object().if_contains(member.key());
           return found && same(member.value(), *found);
         });
}

void checkArguments(const json::object& object) {
  const Body body(object);
  for (const auto& member : object) {
    const std::string key(member.key());
    const auto& value = member.value();
    const auto text = body.s(key);
    if (text) {
      hold(!text->empty(), "no text is absent", key);
      holdUtf8(*text, "a text is UTF-8");
    }
    hold(body.d(key).has_value() == value.is_number(), "a number is one", key);
    hold(body.b(key).has_value() == value.is_bool(), "a truth value is one", key);
    try {
      const auto whole = body.i(key);
      hold(!whole || !value.is_int64() || *whole == value.get_int64(), "it is that number", key);
    } catch (const AppError& error) {
      holdUtf8(error.what(), "a refusal is UTF-8");
    }
    hold(body.ids(key).empty() || body.ids(key).size() == value.get_array().size(), "all or none");
  }
}

}  // namespace

void target(std::string_view input) {
  const auto value = parseJson(input, 500);
  const auto request = parseRequest(input);
  if (!value) {
    hold(!request, "what is no JSON is no request");
    return;
  }
  if (isFinite(*value)) {
    const auto written = json::serialize(*value);
    const auto again = parseJson(written, 500);
    hold(again && same(*again, *value), "JSON comes back", written);
    const auto plain = plainNumbers(written);
    const auto plainly = parseJson(plain, 500);
    hold(plainly && same(*plainly, *value), "plain numbers are the same", plain);
  }
  if (!request) return;
  holdUtf8(request->path, "a path is UTF-8");
  checkArguments(request->body);
  const auto refused = failure(request->path);
  hold(refused.failed && parseJson(refused.json), "a refusal is JSON", refused.json);
}

}  // namespace orvanta::fuzz
