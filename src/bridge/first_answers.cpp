#include "bridge/first_answers.h"

#include <fmt/format.h>

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "bridge/core.h"
#include "bridge/request.h"

namespace orvanta {

std::string firstAnswers(Core& core) {
  struct Question {
    std::string_view path;
    boost::json::object body;
  };
  const auto today = core.analytics.today().iso();
  const Question questions[]{{"routes.list", {}},
                             {"page.marks", {}},
                             {"status", {}},
                             {"store.status", {}},
                             {"projects.list", {}},
                             {"day", {{"date", today}}},
                             {"goals.history", {{"from", today}, {"to", today}}}};
  std::string list;
  for (const auto& [path, body] : questions) {
    const auto given = answer(core.router, path, body);
    if (given.failed) continue;
    list += fmt::format(R"({}{{"path":"{}","body":{},"answer":{}}})", list.empty() ? '[' : ',',
                        path, boost::json::serialize(body), given.json);
  }
  return list.empty() ? "[]" : list + ']';
}

}  // namespace orvanta
