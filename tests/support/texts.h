// Texts that are looked for and compared.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace orvanta::test {

using Texts = std::vector<std::string>;

/// Whether the text has this part; shows the text otherwise.
inline testing::AssertionResult holds(std::string_view text, std::string_view part) {
  return (text.find(part) != text.npos ? testing::AssertionSuccess() : testing::AssertionFailure())
         << text;
}

}  // namespace orvanta::test
