#include "base/display_text.h"

#include <fmt/format.h>
#include <glib.h>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <cmath>
#include <cstdint>
#include <memory>

#include "base/text.h"

namespace orvanta {
namespace {

bool endsLineOrControls(UChar32 c) {
  switch (u_charType(c)) {
    case U_CONTROL_CHAR:
    case U_LINE_SEPARATOR:
    case U_PARAGRAPH_SEPARATOR:
      return true;
    default:
      return false;
  }
}

bool turnsDirection(UChar32 c) {
  return (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

void shorten(icu::UnicodeString& text, std::size_t most) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::BreakIterator> characters(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  if (U_FAILURE(status)) return;
  characters->setText(text);
  int32_t cut = 0;
  for (std::size_t count = 1; characters->next() != icu::BreakIterator::DONE; ++count) {
    if (count + 1 == most) cut = characters->current();
    if (count > most) {
      text.truncate(cut);
      text.append(UChar32{0x2026});
      return;
    }
  }
}

}  // namespace

std::string fmtDur(double seconds) {
  constexpr int64_t kMinute = 60;
  constexpr int64_t kHour = 3600;
  constexpr double kMost = 9e18;
  g_assert_true(std::abs(seconds) < kMost);
  const int64_t s = std::llround(seconds);
  if (s < kMinute) return fmt::format("{} s", s);
  const int64_t minutes = s % kHour / kMinute;
  if (s < kHour) return fmt::format("{} min", minutes);
  return fmt::format("{} h {:02}", s / kHour, minutes);
}

std::string oneLine(std::string_view text, std::size_t most) {
  // More than this is not looked at: a title can be a whole book.
  constexpr std::size_t kBytesPerCharacter = 32;
  const auto all =
      icu::UnicodeString::fromUTF8(validUtf8(text.substr(0, most * kBytesPerCharacter)));
  icu::UnicodeString line;
  for (int32_t i = 0; i < all.length(); i = all.moveIndex32(i, 1)) {
    const auto c = all.char32At(i);
    if (turnsDirection(c)) continue;
    line.append(endsLineOrControls(c) ? UChar32{' '} : c);
  }
  if (static_cast<std::size_t>(line.length()) > most) shorten(line, most);
  std::string shown;
  line.toUTF8String(shown);
  return shown;
}

std::string asMarkup(const std::string& utf8) {
  const std::unique_ptr<char, decltype(&g_free)> text(
      g_markup_escape_text(utf8.data(), static_cast<gssize>(utf8.size())), g_free);
  return text.get();
}

}  // namespace orvanta
