#include "storage/log_frames.h"

#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <vector>

#include "storage/page_format.h"

namespace orvanta {
namespace {

using pages::Bytes;
using pages::number32;

constexpr std::size_t kHeader = 32;
constexpr std::size_t kFrameHead = 24;
constexpr std::size_t kFrameSummed = 8;  // of the frame's head
constexpr uint32_t kMagic = 0x377f0682;  // the last bit: the checksum's byte order

class Checksum {
 public:
  explicit Checksum(bool highFirst) : highFirst_(highFirst) {}
  void add(Bytes bytes) {
    for (std::size_t at = 0; at + kPair <= bytes.size(); at += kPair) {
      one_ += word(bytes, at) + two_;
      two_ += word(bytes, at + 4) + one_;
    }
  }
  bool is(uint32_t one, uint32_t two) const { return one_ == one && two_ == two; }

 private:
  static constexpr std::size_t kPair = 8;
  uint32_t word(Bytes bytes, std::size_t at) const {
    const auto number = number32(bytes, at);
    return highFirst_ ? number : __builtin_bswap32(number);
  }

  bool highFirst_;
  uint32_t one_ = 0;
  uint32_t two_ = 0;
};

struct Header {
  std::size_t pageSize;
  uint32_t salt1;
  uint32_t salt2;
  Checksum checksum;
};

std::optional<Header> readHeader(int file) {
  std::vector<uint8_t> bytes(kHeader);
  if (pread(file, bytes.data(), kHeader, 0) != static_cast<ssize_t>(kHeader)) return {};
  const auto magic = number32(bytes, 0);
  Header header{number32(bytes, 8), number32(bytes, 16), number32(bytes, 20),
                Checksum((magic & 1U) != 0)};
  if ((magic & ~1U) != kMagic || !pages::isPageSize(header.pageSize)) return {};
  header.checksum.add(Bytes(bytes).first(kHeader - kFrameSummed));
  if (!header.checksum.is(number32(bytes, 24), number32(bytes, 28))) return {};
  return header;
}

bool sameSalts(const Header& header, Bytes frame) {
  return number32(frame, 8) == header.salt1 && number32(frame, 12) == header.salt2;
}

}  // namespace

LogFrames readLogFrames(int file) {
  LogFrames log;
  struct stat facts{};
  if (file < 0 || fstat(file, &facts) != 0 || facts.st_size == 0) return log;
  auto header = readHeader(file);
  if (!header) {
    log.cut = true;
    return log;
  }
  log.pageSize = header->pageSize;
  std::vector<uint8_t> frame(kFrameHead + log.pageSize);
  std::unordered_map<uint32_t, uint64_t> uncommitted;
  bool good = true;
  for (uint64_t at = kHeader;; at += frame.size()) {
    const auto got = pread(file, frame.data(), frame.size(), static_cast<off_t>(at));
    if (got < static_cast<ssize_t>(kFrameHead)) break;
    const bool ours = sameSalts(*header, frame);
    if (good && ours && got == static_cast<ssize_t>(frame.size())) {
      header->checksum.add(Bytes(frame).first(kFrameSummed));
      header->checksum.add(Bytes(frame).subspan(kFrameHead));
      good = header->checksum.is(number32(frame, 16), number32(frame, 20));
    } else {
      good = false;
    }
    if (!good) {
      // What an earlier log left here has other salts.
      log.cut = log.cut || ours;
      continue;
    }
    uncommitted[number32(frame, 0)] = at + kFrameHead;
    if (const auto pages = number32(frame, 4); pages != 0) {
      for (const auto& [page, offset] : uncommitted) log.newest[page] = offset;
      uncommitted.clear();
      log.pages = pages;
    }
  }
  return log;
}

}  // namespace orvanta
