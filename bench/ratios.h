// Ratios between benchmarks of one run, which say something on any machine.
#pragma once

#include <string>

namespace orvanta::bench {

/// Prints, after the run, the processor time of benchmark `name` as a multiple of that of `floor`.
/// A ratio above `limit` makes the program exit with 1.
void expectRatio(const std::string& name, const std::string& floor, double limit);

}  // namespace orvanta::bench
