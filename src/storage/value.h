// What goes into a statement and what comes out of a row.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orvanta {

/// A dynamically typed value of the store: nothing (NULL), integer, double or text.
class Value {
 public:
  Value() = default;
  Value(std::nullptr_t) {}                                // NOLINT(google-explicit-constructor)
  Value(std::nullopt_t) {}                                // NOLINT(google-explicit-constructor)
  Value(bool truth) : value_(int64_t{truth}) {}           // NOLINT(google-explicit-constructor)
  Value(int number) : value_(int64_t{number}) {}          // NOLINT(google-explicit-constructor)
  Value(int64_t number) : value_(number) {}               // NOLINT(google-explicit-constructor)
  Value(double number) : value_(number) {}                // NOLINT(google-explicit-constructor)
  Value(const char* text) : value_(std::string(text)) {}  // NOLINT(google-explicit-constructor)
  Value(std::string text) : value_(std::move(text)) {}    // NOLINT(google-explicit-constructor)
  Value(std::string_view text)
      : value_(std::string(text)) {}  // NOLINT(google-explicit-constructor)
  template <class T>
  Value(const std::optional<T>& maybe) {  // NOLINT(google-explicit-constructor)
    if (maybe) *this = Value(*maybe);
  }

  bool isNull() const { return std::holds_alternative<std::monostate>(value_); }
  const int64_t* integer() const { return std::get_if<int64_t>(&value_); }
  const double* real() const { return std::get_if<double>(&value_); }
  const std::string* text() const { return std::get_if<std::string>(&value_); }

 private:
  std::variant<std::monostate, int64_t, double, std::string> value_;
};

using Args = std::vector<Value>;

/// `number` without its fraction. Absent when it is not finite or does not fit 64 bits: a damaged
/// value must not end the program.
std::optional<int64_t> truncated(double number);

/// One row of a result: column name to value. The typed accessors never convert text to numbers or
/// numbers to text; what is missing, NULL or of another type is absent.
class Row {
 public:
  using Columns = std::vector<std::string>;

  Row(std::shared_ptr<const Columns> columns, std::vector<Value> values)
      : columns_(std::move(columns)), values_(std::move(values)) {}

  /// Null when there is no such column; the last of several columns of one name.
  const Value* find(std::string_view column) const;

  std::optional<std::string> str(std::string_view column) const;
  /// A double is truncated toward zero.
  std::optional<int64_t> int_(std::string_view column) const;
  /// An integer is converted; 0 when there is no number.
  double dbl(std::string_view column) const;

  const Columns& columns() const { return *columns_; }
  const std::vector<Value>& values() const { return values_; }

 private:
  std::shared_ptr<const Columns> columns_;
  std::vector<Value> values_;
};

}  // namespace orvanta
