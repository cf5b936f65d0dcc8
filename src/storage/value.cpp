#include "storage/value.h"

#include <cmath>

namespace orvanta {

std::optional<int64_t> truncated(double number) {
  constexpr double kTwoTo63 = 9223372036854775808.0;
  if (!(number >= -kTwoTo63 && number < kTwoTo63)) return {};
  return static_cast<int64_t>(number);
}

const Value* Row::find(std::string_view column) const {
  for (auto i = columns_->size(); i-- > 0;) {
    if ((*columns_)[i] == column) return &values_[i];
  }
  return nullptr;
}

std::optional<std::string> Row::str(std::string_view column) const {
  const auto* value = find(column);
  if (!value || !value->text()) return {};
  return *value->text();
}

std::optional<int64_t> Row::int_(std::string_view column) const {
  const auto* value = find(column);
  if (!value) return {};
  if (const auto* number = value->integer()) return *number;
  if (const auto* number = value->real()) return truncated(*number);
  return {};
}

double Row::dbl(std::string_view column) const {
  const auto* value = find(column);
  if (!value) return 0;
  if (const auto* number = value->real()) return *number;
  if (const auto* number = value->integer()) return static_cast<double>(*number);
  return 0;
}

}  // namespace orvanta
