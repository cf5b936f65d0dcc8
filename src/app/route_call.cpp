#include "app/route_call.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <new>
#include "base/text.h"

#include "bridge/app_error.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::object parseBody(const std::string& text) {
  boost::system::error_code broken;
  auto body = json::parse(text, broken);
  if (broken) throw AppError("arguments illisibles : ce n'est pas du JSON");
  if (!body.is_object()) throw AppError("arguments illisibles : un objet JSON est attendu");
  return std::move(body.get_object());
}

}  // namespace

CallResult callRoute(const Router& router, const std::vector<std::string>& words) {
  try {
    if (words.empty() || words.size() > 2) throw AppError("usage : orvanta --call ROUTE [JSON]");
    const auto body = words.size() > 1 ? parseBody(words[1]) : json::object();
    return {json::serialize(router.handle(words[0], body)) + "\n", 0};
  } catch (const std::bad_alloc&) {  // the capture goes on
    return {"{\"error\":\"mémoire insuffisante pour cette réponse\"}\n", 1};
  } catch (const AppError& error) {
    // The message may quote a word of the command line, which can be any bytes.
    const auto message = validUtf8(error.what());
    return {json::serialize(json::object{{"error", message}}) + "\n", 1};
  }
}

}  // namespace orvanta
