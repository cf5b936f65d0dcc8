// What the program needs to know about text: UTF-8 in, UTF-8 out, Unicode rules by ICU.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

bool isAscii(std::string_view text);

/// Whether lowerCase() would change letters of ASCII only, as in most French text: told at a glance
/// of small letters with accents and of punctuation, and denied of all else beyond ASCII.
bool lowersLikeAscii(std::string_view text);

/// Full Unicode lower-casing, independent of the user's language.
std::string lowerCase(std::string_view utf8);

/// `utf8` without the marks on its letters: "été" becomes "ete".
std::string withoutAccents(std::string_view utf8);

/// The runs of letters and digits in `utf8`.
std::vector<std::string> words(std::string_view utf8);

/// The number of code points of a text; of invalid UTF-8, of the bytes that do not continue one.
std::size_t codePoints(std::string_view utf8);

/// Number of characters as a reader sees them (extended grapheme clusters): "é" is one however it
/// is encoded.
std::size_t userCharacters(std::string_view utf8);

/// The first `most` such characters of `utf8`, or all of it.
std::string firstCharacters(std::string_view utf8, std::size_t most);

/// `text` without the spaces and tabs at both ends, or other blanks. Line feeds stay.
std::string_view trimBlanks(std::string_view text, std::string_view blanks = " \t");

/// The same; absent when that leaves nothing.
std::optional<std::string> unlessBlank(std::string_view text);

/// `text` with every byte that is not UTF-8, and every NUL, replaced by U+FFFD.
std::string validUtf8(std::string_view text);

}  // namespace orvanta
