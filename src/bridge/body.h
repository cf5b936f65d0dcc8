// The arguments of a request.
#pragma once

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// Text as a person would write the value: a string as it is, a number in decimal, true and false
/// as "1" and "0", a list or an object as compact JSON.
std::string plainText(const boost::json::value& value);

/// Reads arguments by name. Those that are missing, null or of a kind that cannot be meant are
/// absent.
class Body {
 public:
  /// `object` outlives the body.
  explicit Body(const boost::json::object& object) : object_(object) {}

  /// Text; the empty string counts as absent, what is no text as its plainText().
  std::optional<std::string> s(std::string_view key) const;
  /// The same without blanks around it, which may leave the empty string.
  std::optional<std::string> trimmed(std::string_view key) const;
  /// A whole number: an integer, the part of a number before the point, or a string in base 10.
  /// Throws AppError for a number that does not fit 64 bits.
  std::optional<int64_t> i(std::string_view key) const;
  /// A number.
  std::optional<double> d(std::string_view key) const;
  /// A truth value.
  std::optional<bool> b(std::string_view key) const;
  /// Whole numbers; empty when it is no list, or one of them is none.
  std::vector<int64_t> ids(std::string_view key) const;
  /// Null when missing.
  const boost::json::value* find(std::string_view key) const { return object_.if_contains(key); }
  const boost::json::object& object() const { return object_; }

 private:
  const boost::json::object& object_;
};

}  // namespace orvanta
