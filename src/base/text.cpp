#include "base/text.h"

#include <glib.h>
#include <unicode/brkiter.h>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>

namespace orvanta {
namespace {

icu::UnicodeString fromUtf8(std::string_view utf8) {
  return icu::UnicodeString::fromUTF8(
      icu::StringPiece(utf8.data(), static_cast<int32_t>(utf8.size())));
}

constexpr uint64_t kHighBits = 0x8080808080808080;

// Reports ask of every text; so eight bytes at a time.
uint64_t eightBytes(std::string_view text) {
  uint64_t bytes = 0;
  std::memcpy(&bytes, text.data(), sizeof(bytes));
  return bytes;
}

// How many bytes of ASCII are sure to be at the beginning of `text`.
std::size_t asciiBytes(std::string_view text) {
  std::size_t count = 0;
  for (; text.size() - count >= sizeof(uint64_t); count += sizeof(uint64_t)) {
    const auto beyond = eightBytes(text.substr(count)) & kHighBits;
    if (beyond == 0) continue;
    const auto before = std::endian::native == std::endian::little ? std::countr_zero(beyond)
                                                                   : std::countl_zero(beyond);
    return count + static_cast<std::size_t>(before) / 8;
  }
  return count;
}

// How long the character is that `text` begins with, if it is of ASCII, or beyond and lower-cased;
// 0 for others.
std::size_t caselessBytes(std::string_view text) {
  const auto byte = [&](std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
  };
  const auto continues = [&](std::size_t at) { return (byte(at) & 0xC0) == 0x80; };
  if (byte(0) < 0x80) return 1;
  if (byte(0) == 0xC2 && byte(1) >= 0xA0 && continues(1)) return 2;  // U+00A0 on: « ° »
  if (byte(0) == 0xC3 && byte(1) >= 0x9F && continues(1)) return 2;  // U+00DF on: ß à é
  if (byte(0) == 0xE2 && byte(1) == 0x80 && continues(2)) return 3;  // U+2000 on: – ’ …
  return 0;
}

}  // namespace

bool isAscii(std::string_view text) {
  uint64_t bits = 0;
  if (text.size() < sizeof(bits)) {
    for (const char c : text) bits |= static_cast<unsigned char>(c);
    return (bits & kHighBits) == 0;
  }
  const auto last = text.substr(text.size() - sizeof(bits));  // overlaps those before it
  for (; text.size() > sizeof(bits); text.remove_prefix(sizeof(bits))) bits |= eightBytes(text);
  return ((bits | eightBytes(last)) & kHighBits) == 0;
}

bool lowersLikeAscii(std::string_view text) {
  if (isAscii(text)) return true;
  while (!text.empty()) {
    text.remove_prefix(asciiBytes(text));
    if (text.empty()) return true;
    const auto known = caselessBytes(text);
    if (known == 0) return false;
    text.remove_prefix(known);
  }
  return true;
}

std::string lowerCase(std::string_view utf8) {
  std::string lowered;
  if (isAscii(utf8)) {
    lowered.resize(utf8.size());
    std::transform(utf8.begin(), utf8.end(), lowered.begin(), g_ascii_tolower);
    return lowered;
  }
  lowered.reserve(utf8.size());
  icu::StringByteSink<std::string> sink(&lowered);
  UErrorCode status = U_ZERO_ERROR;
  icu::CaseMap::utf8ToLower("", 0, icu::StringPiece(utf8.data(), static_cast<int32_t>(utf8.size())),
                            sink, nullptr, status);
  return U_SUCCESS(status) ? lowered : std::string(utf8);
}

std::string withoutAccents(std::string_view utf8) {
  if (isAscii(utf8)) return std::string(utf8);
  UErrorCode status = U_ZERO_ERROR;
  const auto* decomposer = icu::Normalizer2::getNFDInstance(status);
  if (U_FAILURE(status)) return std::string(utf8);
  const auto decomposed = decomposer->normalize(fromUtf8(utf8), status);
  icu::UnicodeString bare;
  for (int32_t i = 0; i < decomposed.length(); i = decomposed.moveIndex32(i, 1)) {
    const auto c = decomposed.char32At(i);
    if (u_charType(c) != U_NON_SPACING_MARK) bare.append(c);
  }
  std::string folded;
  bare.toUTF8String(folded);
  return folded;
}

std::vector<std::string> words(std::string_view utf8) {
  const auto text = fromUtf8(utf8);
  std::vector<std::string> found;
  icu::UnicodeString word;
  const auto finish = [&] {
    if (!word.isEmpty()) word.toUTF8String(found.emplace_back());
    word.remove();
  };
  for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
    const auto c = text.char32At(i);
    // Marks belong to the letter before them.
    if (u_isalnum(c) != 0 || (U_GET_GC_MASK(c) & U_GC_M_MASK) != 0) {
      word.append(c);
    } else {
      finish();
    }
  }
  finish();
  return found;
}

std::size_t codePoints(std::string_view utf8) {
  constexpr uint8_t kContinues = 0x80;
  constexpr uint8_t kTwoBits = 0xC0;
  return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
    return (static_cast<uint8_t>(c) & kTwoBits) != kContinues;
  }));
}

std::size_t userCharacters(std::string_view utf8) {
  // Below U+0300 nothing joins the character before it but a line feed. ICU's iterator would bring
  // half a megabyte of its library into memory for what most texts do not need.
  constexpr uint8_t kFirstThatMayJoin = 0xCC;  // lead byte of U+0300
  const bool plain = std::none_of(utf8.begin(), utf8.end(), [](char c) {
    return c == '\r' || static_cast<uint8_t>(c) >= kFirstThatMayJoin;
  });
  if (plain) return codePoints(utf8);
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::BreakIterator> characters(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  if (U_FAILURE(status)) return utf8.size();
  const auto text = fromUtf8(utf8);
  characters->setText(text);
  std::size_t count = 0;
  while (characters->next() != icu::BreakIterator::DONE) ++count;
  return count;
}

std::string firstCharacters(std::string_view utf8, std::size_t most) {
  if (utf8.size() <= most) return std::string(utf8);  // no character is shorter than a byte
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::BreakIterator> characters(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  if (U_FAILURE(status)) return {};
  const auto text = fromUtf8(utf8);
  characters->setText(text);
  const auto end = characters->next(static_cast<int32_t>(most));
  std::string first;
  (end == icu::BreakIterator::DONE ? text : text.tempSubString(0, end)).toUTF8String(first);
  return first;
}

std::string_view trimBlanks(std::string_view text, std::string_view blanks) {
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<std::string> unlessBlank(std::string_view text) {
  const auto trimmed = trimBlanks(text);
  return trimmed.empty() ? std::nullopt : std::optional<std::string>(trimmed);
}

std::string validUtf8(std::string_view text) {
  if (text.empty()) return {};  // GLib would take a null pointer amiss
  const std::unique_ptr<char, decltype(&g_free)> valid(
      g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
  return valid.get();
}

}  // namespace orvanta
