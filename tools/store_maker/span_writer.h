// Where a made-up life goes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "storage/transaction.h"

namespace orvanta {

/// A row of `events`.
struct MadeSpan {
  double start = 0;
  double end = 0;
  std::string app;
  std::optional<std::string> title = {};
  std::optional<std::string> url = {};
  std::optional<std::string> domain = {};
  bool idle = false;
  std::optional<std::string> category = {};
  std::optional<int64_t> project = {};
};

/// Puts it into the store; of one that ends in the future what is past, of a later one nothing.
class SpanWriter {
 public:
  SpanWriter(Transaction& change, double now) : change_(change), now_(now) {}

  void add(const MadeSpan& span);

 private:
  Transaction& change_;
  double now_;
};

}  // namespace orvanta
