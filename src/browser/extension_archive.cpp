#include "browser/extension_archive.h"

#include <cstdint>

namespace orvanta {
namespace {

std::string bytes(uint32_t number, int count) {
  constexpr uint32_t kByte = 0xff;
  constexpr uint32_t kBits = 8;
  std::string text;
  for (; count > 0; --count, number >>= kBits) text += static_cast<char>(number & kByte);
  return text;
}

std::string two(std::size_t number) {
  return bytes(static_cast<uint32_t>(number), 2);
}

std::string four(std::size_t number) {
  return bytes(static_cast<uint32_t>(number), 4);
}

uint32_t checksum(const std::string& text) {
  constexpr uint32_t kPolynomial = 0xedb88320;
  uint32_t sum = ~0U;
  for (const char c : text) {
    sum ^= static_cast<unsigned char>(c);
    for (int bit = 0; bit < 8; ++bit) sum = (sum >> 1U) ^ ((sum & 1U) != 0 ? kPolynomial : 0);
  }
  return ~sum;
}

// What stands both before the content and in the directory: version 1.0, no flags, stored, the
// first instant that the format knows, sizes.
std::string facts(const std::string& name, const std::string& content) {
  constexpr std::size_t kFirstDay = (1U << 5U) | 1U;  // 1 January 1980
  return two(10) + two(0) + two(0) + two(0) + two(kFirstDay) + four(checksum(content)) +
         four(content.size()) + four(content.size()) + two(name.size()) + two(0);
}

}  // namespace

// APPNOTE.TXT, the description of the format by PKWARE, 4.3.
std::string archiveOf(const std::map<std::string, std::string>& files) {
  std::string contents;
  std::string directory;
  for (const auto& [name, content] : files) {
    directory += "PK\x01\x02" + two(10) + facts(name, content) + two(0) + two(0) + two(0) +
                 four(0) + four(contents.size()) + name;
    contents += "PK\x03\x04" + facts(name, content) + name + content;
  }
  return contents + directory + "PK\x05\x06" + two(0) + two(0) + two(files.size()) +
         two(files.size()) + four(directory.size()) + four(contents.size()) + two(0);
}

}  // namespace orvanta
