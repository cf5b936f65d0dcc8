// The lines of a calendar file.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvanta {

/// A line of a calendar file: NAME;PARAMETER=…:VALUE.
struct Property {
  std::string name;  // lower-cased
  std::string parameters;
  std::string value;
};

/// One after the other: a file of nothing but line ends would be a hundred times as large in a
/// list.
class CalendarLines {
 public:
  explicit CalendarLines(std::string_view text) : text_(text) {}

  /// To the next; false where there is none. Long lines go on in the next, which then begins with a
  /// blank.
  bool next();
  const std::string& line() const { return line_; }
  std::size_t number() const { return number_; }

 private:
  std::string_view piece();

  std::string_view text_;
  std::size_t read_ = 0;
  std::string line_;
  std::size_t number_ = 0;  // of its first piece, counted from 1
};

/// Absent for a line that is none.
std::optional<Property> propertyIn(std::string_view line);

/// A text without its escapes, on one line.
std::string plainText(std::string_view value);

}  // namespace orvanta
