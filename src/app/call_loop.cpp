#include "app/call_loop.h"

#include <fmt/format.h>
#include <glibmm/main.h>

#include <string>

#include "base/exact_json.h"
#include "bridge/request.h"

namespace orvanta {

void answerLines(Core& core, std::istream& requests, std::ostream& answers) {
  const auto context = Glib::MainContext::get_default();
  for (std::string line; std::getline(requests, line);) {
    while (context->iteration(false)) {
    }
    const auto request = parseRequest(line);
    if (!request) continue;
    core.db.look();  // nothing is recorded here that would do it
    const auto text = answer(core.router, request->path, request->body).json;
    answers << fmt::format("{{\"id\":{},\"answer\":{}}}\n", request->id, plainNumbers(text))
            << std::flush;
  }
}

}  // namespace orvanta
