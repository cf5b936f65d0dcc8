#include "base/folded.h"

#include <glib.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <array>
#include <cstdint>

namespace orvanta {
namespace {

constexpr UChar32 kReplacement = 0xFFFD;

// Letters that Unicode does not take apart.
const char* letters(UChar32 c) {
  switch (c) {
    case U'æ':
    case U'Æ':
      return "ae";
    case U'œ':
    case U'Œ':
      return "oe";
    case U'ø':
    case U'Ø':
      return "o";
    case U'đ':
    case U'Đ':
      return "d";
    case U'ł':
    case U'Ł':
      return "l";
    case U'ı':
      return "i";
    case U'‘':
    case U'’':
      return "'";
    default:
      return nullptr;
  }
}

bool vanishes(UChar32 c) {
  const auto kind = u_charType(c);
  return kind == U_NON_SPACING_MARK || kind == U_ENCLOSING_MARK || kind == U_FORMAT_CHAR;
}

std::string foldedCharacter(UChar32 c) {
  if (const auto* known = letters(c)) return known;
  if (u_isUWhiteSpace(c) || u_charType(c) == U_CONTROL_CHAR) return " ";
  icu::UnicodeString bare;
  UErrorCode status = U_ZERO_ERROR;
  const auto* decomposer = icu::Normalizer2::getNFKDInstance(status);
  if (U_FAILURE(status)) return {};
  const auto parts = decomposer->normalize(icu::UnicodeString(c).foldCase(), status);
  for (int32_t i = 0; i < parts.length(); i = parts.moveIndex32(i, 1)) {
    const auto part = parts.char32At(i);
    if (!vanishes(part)) bare.append(part);
  }
  std::string text;
  // What is a capital only when it is taken apart: "№" is "No".
  bare.foldCase().toUTF8String(text);
  return text;
}

// Of the characters that most texts are made of, in the order of their numbers.
template <UChar32 from, UChar32 to>
const std::string& ofTable(UChar32 c) {
  static const auto kTable = [] {
    std::array<std::string, to - from> table;
    for (UChar32 i = from; i < to; ++i) table.at(i - from) = foldedCharacter(i);
    return table;
  }();
  return kTable[static_cast<std::size_t>(c - from)];
}

}  // namespace

void appendFolded(std::string& text, std::string_view utf8) {
  constexpr UChar32 kAscii = 0x80;
  constexpr UChar32 kLatinEnd = 0x370;
  constexpr UChar32 kPunctuation = 0x2000;
  constexpr UChar32 kPunctuationEnd = 0x2070;
  constexpr char kFirstVisible = ' ';
  const auto size = static_cast<int32_t>(utf8.size());
  const auto* bytes = utf8.data();
  text.reserve(text.size() + utf8.size());
  for (int32_t i = 0; i < size;) {
    const char byte = utf8[static_cast<std::size_t>(i)];
    if (static_cast<unsigned char>(byte) < kAscii) {
      const bool blank = byte < kFirstVisible || byte == '\x7f';
      text += blank ? ' ' : g_ascii_tolower(byte);
      ++i;
      continue;
    }
    UChar32 c = 0;
    // NOLINTNEXTLINE(bugprone-inc-dec-in-conditions): the library's own
    U8_NEXT(bytes, i, size, c);
    if (c < 0) c = kReplacement;
    if (c < kLatinEnd) {
      text += ofTable<kAscii, kLatinEnd>(c);
    } else if (c >= kPunctuation && c < kPunctuationEnd) {
      text += ofTable<kPunctuation, kPunctuationEnd>(c);
    } else {
      text += foldedCharacter(c);
    }
  }
}

std::string folded(std::string_view utf8) {
  std::string text;
  appendFolded(text, utf8);
  return text;
}

}  // namespace orvanta
