#include "base/exact_json.h"

#include <algorithm>
#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/value_stack.hpp>
#include <charconv>
#include <cstdlib>
#include <string>
#include <system_error>

#include "base/number.h"

namespace orvanta {
namespace {

namespace json = boost::json;
using Error = boost::system::error_code;
using Text = json::string_view;

// What the parser tells, put together to a value.
class Builder {
 public:
  // NOLINTBEGIN(readability-identifier-naming): the parser asks by these names
  static constexpr std::size_t max_object_size = json::object::max_size();
  static constexpr std::size_t max_array_size = json::array::max_size();
  static constexpr std::size_t max_key_size = json::string::max_size();
  static constexpr std::size_t max_string_size = json::string::max_size();
  // NOLINTEND(readability-identifier-naming)

  Builder() { stack_.reset(); }
  json::value release() { return stack_.release(); }

  bool on_document_begin(Error&) { return true; }
  bool on_document_end(Error&) { return true; }
  bool on_object_begin(Error&) { return true; }
  bool on_object_end(std::size_t size, Error&) {
    stack_.push_object(size);
    return true;
  }
  bool on_array_begin(Error&) { return true; }
  bool on_array_end(std::size_t size, Error&) {
    stack_.push_array(size);
    return true;
  }
  bool on_key_part(Text text, std::size_t, Error&) {
    stack_.push_chars(text);
    return true;
  }
  bool on_key(Text text, std::size_t, Error&) {
    stack_.push_key(text);
    return true;
  }
  bool on_string_part(Text text, std::size_t, Error&) {
    stack_.push_chars(text);
    return true;
  }
  bool on_string(Text text, std::size_t, Error&) {
    stack_.push_string(text);
    return true;
  }
  bool on_number_part(Text digits, Error&) {
    digits_.append(digits.data(), digits.size());
    return true;
  }
  bool on_int64(int64_t number, Text, Error&) {
    digits_.clear();
    stack_.push_int64(number);
    return true;
  }
  bool on_uint64(uint64_t number, Text, Error&) {
    digits_.clear();
    stack_.push_uint64(number);
    return true;
  }
  bool on_double(double nearly, Text digits, Error&) {
    digits_.append(digits.data(), digits.size());
    double number = nearly;  // what is out of range stays as it was read
    std::from_chars(digits_.data(), digits_.data() + digits_.size(), number);
    digits_.clear();
    stack_.push_double(number);
    return true;
  }
  bool on_bool(bool truth, Error&) {
    stack_.push_bool(truth);
    return true;
  }
  bool on_null(Error&) {
    stack_.push_null();
    return true;
  }
  bool on_comment_part(Text, Error&) { return true; }
  bool on_comment(Text, Error&) { return true; }

 private:
  json::value_stack stack_;
  std::string digits_;  // of a number that comes in parts
};

// The UTF-16 unit that the escape at this place names.
std::optional<unsigned> unitAt(std::string_view text, std::size_t at) {
  constexpr std::size_t kDigits = 4;
  const auto escape = text.substr(std::min(at, text.size()), 2 + kDigits);
  if (escape.size() < 2 + kDigits || !escape.starts_with("\\u")) return {};
  unsigned unit = 0;
  const auto* end = escape.data() + escape.size();
  const auto [stop, error] = std::from_chars(escape.data() + 2, end, unit, 16);
  return error == std::errc() && stop == end ? std::optional(unit) : std::nullopt;
}

// Half a pair of surrogates, which is no character, becomes U+FFFD.
std::string withWholePairs(std::string_view text) {
  constexpr unsigned kKind = 0xFC00;
  constexpr unsigned kFirst = 0xD800;
  constexpr unsigned kSecond = 0xDC00;
  std::string whole;
  whole.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const auto unit = unitAt(text, at);
    const auto kind = unit.value_or(0) & kKind;
    std::size_t length = unit ? 6 : text[at] == '\\' ? 2 : 1;
    const bool pair = kind == kFirst && (unitAt(text, at + length).value_or(0) & kKind) == kSecond;
    if (pair) length *= 2;
    const bool half = !pair && (kind == kFirst || kind == kSecond);
    whole += half ? "\\ufffd" : text.substr(at, length);
    at += length;
  }
  return whole;
}

std::optional<json::value> parse(std::string_view text, std::size_t deepest) {
  json::parse_options options;
  options.max_depth = deepest;
  json::basic_parser<Builder> parser(options);
  Error broken;
  const auto read = parser.write_some(false, text.data(), text.size(), broken);
  if (broken || read != text.size()) return {};
  return parser.handler().release();
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view withoutZeros(std::string_view fraction) {
  return fraction.substr(0, fraction.find_last_not_of('0') + 1);
}

// The same digits with the point elsewhere, so that nothing is rounded.
std::string plainNumber(std::string_view number) {
  constexpr int kMost = 40;
  const auto exponentAt = number.find_first_of("eE");
  if (exponentAt == std::string_view::npos) return std::string(number);
  const auto exponent =
      parseNumber<int>(number.substr(exponentAt + (number[exponentAt + 1] == '+' ? 2 : 1)));
  if (!exponent || std::abs(*exponent) > kMost) return std::string(number);
  auto mantissa = number.substr(0, exponentAt);
  std::string sign;
  if (mantissa.starts_with('-')) {
    sign = "-";
    mantissa.remove_prefix(1);
  }
  const auto point = std::min(mantissa.find('.'), mantissa.size());
  std::string digits(mantissa.substr(0, point));
  if (point < mantissa.size()) digits += mantissa.substr(point + 1);
  auto whole = static_cast<int>(point) + *exponent;
  if (whole <= 0) {
    digits.insert(0, static_cast<std::size_t>(1 - whole), '0');
    whole = 1;
  }
  const auto length = static_cast<std::size_t>(whole);
  if (digits.size() < length) digits.resize(length, '0');
  const auto fraction = withoutZeros(std::string_view(digits).substr(length));
  const auto first = std::min(digits.find_first_not_of('0'), length - 1);
  sign += digits.substr(first, length - first);
  return fraction.empty() ? sign : sign + "." + std::string(fraction);
}

}  // namespace

std::optional<json::value> parseJson(std::string_view text, std::size_t deepest) {
  auto value = parse(text, deepest);
  if (value || text.find("\\u") == std::string_view::npos) return value;
  return parse(withWholePairs(text), deepest);
}

std::string plainNumbers(std::string_view json) {
  std::string plain;
  plain.reserve(json.size());
  for (std::size_t at = 0; at < json.size();) {
    const auto from = at;
    if (json[at] == '"') {
      for (++at; at < json.size() && json[at] != '"'; ++at) at += json[at] == '\\' ? 1 : 0;
      plain += json.substr(from, ++at - from);
    } else if (json[at] == '-' || isDigit(json[at])) {
      at = std::min(json.find_first_not_of("-+.eE0123456789", at), json.size());
      plain += plainNumber(json.substr(from, at - from));
    } else {
      plain += json[at++];
    }
  }
  return plain;
}

}  // namespace orvanta
