// Spans counted, and the texts that most of their time went to.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reports/tally.h"
#include "storage/ev.h"

namespace orvanta {

/// How many spans, and how long they last together.
struct SpanCount {
  int64_t spans = 0;
  double seconds = 0;

  void add(const Ev& ev) {
    ++spans;
    seconds += ev.duration();
  }
};

/// A text and the seconds under it.
struct TextShare {
  std::string text;
  double seconds = 0;
};

}  // namespace orvanta
