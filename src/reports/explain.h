// Why spans count as they do.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "classify/classifier.h"
#include "reports/text_shares.h"
#include "storage/database.h"
#include "storage/rule.h"

namespace orvanta {

/// One decision and the spans that it was taken for.
struct Explanation {
  std::string category;
  Decision::By categoryBy = Decision::By::None;
  std::optional<int64_t> categoryRule;  ///< its id
  std::optional<int64_t> project;
  std::optional<std::string> projectName;  ///< absent for a project that no longer exists
  Decision::By projectBy = Decision::By::None;
  std::optional<int64_t> projectRule;  ///< its id
  std::optional<std::string> keyword;  ///< the project's first one that occurs in the span's texts
  std::vector<Rule> rules;             ///< those that are named, each once

  SpanCount count;
  std::vector<TextShare> titles;  ///< the 3 largest
  std::vector<TextShare> urls;    ///< the 3 largest
};

struct Explanations {
  std::vector<Explanation> list;  ///< by falling seconds
  bool whole = true;              ///< false when not all spans could be read
};

/// The distinct decisions for the spans of these ids; other ids are ignored. Any thread; throws
/// nothing.
Explanations explainSpans(Database& db, const std::vector<int64_t>& ids);

}  // namespace orvanta
