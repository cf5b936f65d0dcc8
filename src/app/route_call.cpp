#include "app/route_call.h"

#include <utility>

#include "base/exact_json.h"
#include "bridge/request.h"

namespace orvanta {

CallResult callRoute(Router& router, const std::vector<std::string>& words) {
  namespace json = boost::json;
  const auto line = [](const Answer& answer) {
    return CallResult{plainNumbers(answer.json) + "\n", answer.failed ? 1 : 0};
  };
  if (words.empty() || words.size() > 2) {
    return line(failure("usage : orvanta --call ROUTE [JSON]"));
  }
  json::value body = json::object();
  if (words.size() > 1) {
    auto read = parseJson(words[1]);
    if (!read) return line(failure("arguments illisibles : ce n’est pas du JSON"));
    body = std::move(*read);
  }
  if (!body.is_object()) {
    return line(failure("arguments illisibles : un objet JSON est attendu"));
  }
  return line(answer(router, words[0], body.get_object()));
}

}  // namespace orvanta
