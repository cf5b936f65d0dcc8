#include "platform/x11/compound_text.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <array>

#include "base/text.h"

namespace orvanta::x11 {
namespace {

// A character set by the end of the escape sequence that calls it, and the encoding which holds it
// in its upper half.
struct CharacterSet {
  std::string_view escape;
  const char* encoding;
};
constexpr std::array<CharacterSet, 19> kCharacterSets{{
    {"-A", "ISO-8859-1"}, {"-B", "ISO-8859-2"}, {"-C", "ISO-8859-3"},  {"-D", "ISO-8859-4"},
    {"-F", "ISO-8859-7"}, {"-G", "ISO-8859-6"}, {"-H", "ISO-8859-8"},  {"-L", "ISO-8859-5"},
    {"-M", "ISO-8859-9"}, {"-T", "TIS-620"},    {"-Y", "ISO-8859-13"}, {"-b", "ISO-8859-15"},
    {")I", "Shift_JIS"},  {"$(A", "GB2312"},    {"$)A", "GB2312"},     {"$(B", "EUC-JP"},
    {"$)B", "EUC-JP"},    {"$(C", "EUC-KR"},    {"$)C", "EUC-KR"},
}};
constexpr std::string_view kUtf8Follows = "\x1b%G";

bool isHigh(char byte) {
  return static_cast<unsigned char>(byte) >= 0x80;
}

const CharacterSet* characterSet(std::string_view escape) {
  const auto* found = std::find_if(kCharacterSets.begin(), kCharacterSets.end(),
                                   [&](const auto& set) { return set.escape == escape; });
  return found != kCharacterSets.end() ? found : nullptr;
}

// ISO 2022: intermediate bytes from 0x20 to 0x2f, then a final one.
std::size_t escapeLength(std::string_view bytes) {
  const auto* final = std::find_if(bytes.begin() + 1, bytes.end(),
                                   [](char byte) { return byte < 0x20 || byte > 0x2f; });
  return std::min(static_cast<std::size_t>(final - bytes.begin()) + 1, bytes.size());
}

// Bytes of one half; without a set the lower half is ASCII and the upper one is not known.
std::string decode(std::string_view run, const CharacterSet* set) {
  if (!set) return validUtf8(run);
  std::string upper(run);
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](char byte) { return static_cast<char>(byte | 0x80); });
  std::string utf8;
  icu::UnicodeString(upper.data(), static_cast<int32_t>(upper.size()), set->encoding)
      .toUTF8String(utf8);
  return utf8;
}

}  // namespace

std::string fromCompoundText(std::string_view bytes) {
  constexpr char kEscape = '\x1b';
  constexpr std::string_view kEndOfUtf8 = "\x1b%@";
  std::string utf8;
  const CharacterSet* left = nullptr;  // ASCII
  const CharacterSet* right = &kCharacterSets.front();
  while (!bytes.empty()) {
    if (bytes.starts_with(kUtf8Follows)) {
      bytes.remove_prefix(kUtf8Follows.size());
      const auto end = std::min(bytes.find(kEndOfUtf8), bytes.size());
      utf8 += validUtf8(bytes.substr(0, end));
      bytes.remove_prefix(std::min(end + kEndOfUtf8.size(), bytes.size()));
    } else if (bytes.front() == kEscape) {
      const auto length = escapeLength(bytes);
      const auto escape = bytes.substr(1, length - 1);
      if (escape.starts_with("(") || escape.starts_with("$(")) {
        left = characterSet(escape);
      } else if (!escape.starts_with("%")) {
        right = characterSet(escape);
      }
      bytes.remove_prefix(length);
    } else {
      const bool high = isHigh(bytes.front());
      const auto* end = std::find_if(bytes.begin(), bytes.end(), [high](char byte) {
        return byte == kEscape || isHigh(byte) != high;
      });
      const auto run = bytes.substr(0, static_cast<std::size_t>(end - bytes.begin()));
      utf8 += decode(run, high ? right : left);
      bytes.remove_prefix(run.size());
    }
  }
  return utf8;
}

}  // namespace orvanta::x11
