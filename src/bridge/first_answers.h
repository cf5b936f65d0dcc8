// What the dashboard's page asks first, answered before it is there.
#pragma once

#include <string>

namespace orvanta {

struct Core;

/// A JSON list on one line: for each question that a page opened on today asks at once, its path,
/// body and answer. A question that cannot be answered now is left for the page to ask. To be
/// called where routes that read are answered.
std::string firstAnswers(Core& core);

}  // namespace orvanta
