// One request from the command line: `orvanta --call ROUTE [JSON]`.
#pragma once

#include <string>
#include <vector>

#include "bridge/router.h"

namespace orvanta {

/// What is printed, one line of JSON, and the exit status: 0 with the answer, 1 with {"error": …},
/// with a report that is not whole and when something could not be stored.
struct CallResult {
  std::string output;
  int status = 0;
  std::string complaint;  ///< French, for standard error; "" when there is none
};

/// Answers the call; `words` are the route and, where given, its arguments as a JSON object.
CallResult callRoute(Router& router, const std::vector<std::string>& words);

}  // namespace orvanta
