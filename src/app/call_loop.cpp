#include "app/call_loop.h"

#include <fmt/format.h>
#include <glibmm/main.h>

#include <string>

#include "bridge/request.h"

namespace orvanta {

void answerLines(Router& router, std::istream& requests, std::ostream& answers) {
  const auto context = Glib::MainContext::get_default();
  for (std::string line; std::getline(requests, line);) {
    while (context->iteration(false)) {
    }
    const auto request = parseRequest(line);
    if (!request) continue;
    const auto text = answer(router, request->path, request->body).json;
    answers << fmt::format("{{\"id\":{},\"answer\":{}}}\n", request->id, text) << std::flush;
  }
}

}  // namespace orvanta
