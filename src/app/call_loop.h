// Requests from standard input, one a line: `orvanta --call -`.
#pragma once

#include <istream>
#include <ostream>

#include "bridge/core.h"

namespace orvanta {

/// Answers every line of `requests`, an envelope as the page posts them, with a line
/// {"id": number, "answer": JSON}, in their order and at once, until they end. What is no envelope
/// is passed over, as the page's is. The main loop's sources are served in between, and a store
/// that another program has replaced is read anew.
void answerLines(Core& core, std::istream& requests, std::ostream& answers);

}  // namespace orvanta
