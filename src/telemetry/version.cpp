#include "telemetry/version.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "base/number.h"

namespace orvanta {
namespace {

int64_t numberOf(std::string_view piece) {
  // parseNumber knows no plus sign, which a release number may not need either, but it is a number.
  if (piece.starts_with('+') && !piece.starts_with("+-")) piece.remove_prefix(1);
  return parseNumber<int64_t>(piece).value_or(0);
}

std::vector<int64_t> numbersOf(std::string_view version) {
  std::vector<int64_t> numbers;
  while (!version.empty()) {
    const auto dot = std::min(version.find('.'), version.size());
    if (dot > 0) numbers.push_back(numberOf(version.substr(0, dot)));
    version.remove_prefix(std::min(dot + 1, version.size()));
  }
  return numbers;
}

}  // namespace

bool isNewer(std::string_view candidate, std::string_view current) {
  auto left = numbersOf(candidate);
  auto right = numbersOf(current);
  const auto length = std::max(left.size(), right.size());
  left.resize(length);
  right.resize(length);
  return left > right;
}

}  // namespace orvanta
