#include "storage/page_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <string_view>

#include "storage/file_connection.h"
#include "storage/log_frames.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

using pages::Bytes;

constexpr std::size_t kUsualPage = 1024;

std::size_t bytesOfSerialType(uint64_t type) {
  constexpr std::size_t kFixed[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0, 0, 0};
  constexpr uint64_t kFirstOfAnyLength = 12;
  return type < kFirstOfAnyLength ? kFixed[type] : (type - kFirstOfAnyLength) / 2;
}

int64_t signedNumber(Bytes bytes) {
  constexpr unsigned kByte = 8;
  uint64_t number = !bytes.empty() && (bytes[0] & 0x80U) != 0 ? ~uint64_t{0} : 0;
  for (const auto byte : bytes) number = number << kByte | byte;
  return static_cast<int64_t>(number);
}

Value valueOf(uint64_t type, Bytes bytes) {
  enum : uint64_t { kNull = 0, kReal = 7, kZero = 8, kOne = 9, kLastNumber = 9 };
  if (type == kNull) return {};
  if (type == kReal) return std::bit_cast<double>(signedNumber(bytes));
  if (type == kZero || type == kOne) return static_cast<int64_t>(type - kZero);
  if (type <= kLastNumber) return signedNumber(bytes);
  const bool text = type % 2 == 1;
  if (!text) return {};
  return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

// The values of a record; nothing when it does not fit its own lengths exactly.
std::optional<Args> recordOf(Bytes payload) {
  const auto head = pages::varint(payload, 0);
  if (head.length == 0 || head.value > payload.size() || head.value < head.length) return {};
  Args values;
  std::size_t body = head.value;
  for (std::size_t at = head.length; at < head.value;) {
    const auto type = pages::varint(payload.first(head.value), at);
    if (type.length == 0) return {};
    const auto bytes = bytesOfSerialType(type.value);
    if (bytes > payload.size() - body) return {};
    values.push_back(valueOf(type.value, payload.subspan(body, bytes)));
    at += type.length;
    body += bytes;
  }
  return body == payload.size() ? std::optional(values) : std::nullopt;
}

}  // namespace

std::optional<PageFile> PageFile::open(const fs::path& path) {
  PageFile file;
  file.file_ = OwnedFd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat facts{};
  if (!file.file_ || fstat(file.file_.get(), &facts) != 0) return {};
  file.bytes_ = static_cast<uint64_t>(facts.st_size);
  Page header(pages::kFileHeader);
  if (pread(file.file_.get(), header.data(), header.size(), 0) < 0) return {};
  file.log_ = OwnedFd(::open(walOf(path).c_str(), O_RDONLY | O_CLOEXEC));
  auto log = readLogFrames(file.log_.get());
  file.findPageSize(header, log.pageSize);
  file.logCut_ = log.cut;
  if (log.pageSize == file.pageSize_) file.inLog_ = std::move(log.newest);
  const auto inFile = (file.bytes_ + file.pageSize_ - 1) / file.pageSize_;
  const auto most = std::max<uint64_t>(inFile, log.pages);
  if (most == 0 || most > std::numeric_limits<uint32_t>::max() - 1) return {};
  file.pages_ = static_cast<uint32_t>(most);
  return file;
}

void PageFile::findPageSize(const Page& header, std::size_t inLog) {
  constexpr std::string_view kMagic = "SQLite format 3";
  constexpr std::size_t kReservedAt = 20;
  constexpr std::size_t kMostReserved = 64;
  const bool known = std::memcmp(header.data(), kMagic.data(), kMagic.size()) == 0;
  pageSize_ = known ? pages::pageSizeOf(header) : 0;
  if (pageSize_ == 0) pageSize_ = inLog;
  if (pageSize_ == 0) {
    pageSize_ = kUsualPage;
    std::size_t most = leavesWithSize(kUsualPage);
    for (auto size = pages::kSmallestPage; size <= pages::kLargestPage; size *= 2) {
      if (const auto leaves = leavesWithSize(size); leaves > most) {
        most = leaves;
        pageSize_ = size;
      }
    }
  }
  const std::size_t reserved = known ? header[kReservedAt] : 0;
  usable_ = reserved <= kMostReserved ? pageSize_ - reserved : pageSize_;
}

// How many pages look like the ends of tables, were they of this size.
std::size_t PageFile::leavesWithSize(std::size_t size) const {
  std::size_t leaves = 0;
  Page page(size);
  for (uint64_t at = 0; at + size <= bytes_; at += size) {
    if (pread(file_.get(), page.data(), size, static_cast<off_t>(at)) !=
        static_cast<ssize_t>(size)) {
      continue;
    }
    const auto head = pages::treePage(page, 0, size);
    if (!head || head->kind != pages::kTableLeaf || head->cells == 0) continue;
    bool good = true;
    for (std::size_t i = 0; good && i < head->cells; ++i) {
      good = pages::payloadOf(page, *head, head->cell(page, i), size).has_value();
    }
    if (good) ++leaves;
  }
  return leaves;
}

bool PageFile::read(uint32_t number, Page& page) const {
  if (number == 0 || number > pages_) return false;
  page.assign(pageSize_, 0);
  const auto found = inLog_.find(number);
  const auto inFile = uint64_t{number - 1} * pageSize_;
  const auto got =
      found != inLog_.end()
          ? pread(log_.get(), page.data(), pageSize_, static_cast<off_t>(found->second))
          : pread(file_.get(), page.data(), pageSize_, static_cast<off_t>(inFile));
  return got > 0;
}

std::vector<bool> PageFile::freePages() const {
  constexpr std::size_t kCountAt = 36;
  std::vector<bool> free(pages_ + std::size_t{1});
  Page page;
  if (!read(1, page)) return {};
  const auto total = pages::number32(page, pages::kFreelistHead + (kCountAt - 32));
  std::size_t count = 0;
  const auto mark = [&](uint32_t number) -> bool {
    if (number < 2 || number > pages_ || free[number]) return false;
    ++count;
    return free[number] = true;
  };
  for (auto trunk = pages::number32(page, pages::kFreelistHead); trunk != 0;
       trunk = pages::number32(page, 0)) {
    if (!mark(trunk) || !read(trunk, page)) return {};
    const auto leaves = pages::number32(page, 4);
    if (leaves > usable_ / 4 - 2) return {};
    for (std::size_t i = 0; i < leaves; ++i) {
      if (!mark(pages::number32(page, 8 + 4 * i))) return {};
    }
  }
  return count == total ? free : std::vector<bool>();
}

std::optional<std::vector<uint8_t>> PageFile::wholePayload(const Page& page,
                                                           const pages::Payload& payload) const {
  constexpr uint64_t kMost = 16'000'000;  // no title is that long, but a damaged length may be
  if (payload.bytes > std::min(kMost, uint64_t{pages_} * pageSize_)) return {};
  const auto local = Bytes(page).subspan(payload.at, payload.local);
  std::vector<uint8_t> whole(local.begin(), local.end());
  Page next;
  // Each page brings some bytes, so a chain that bites its tail ends too.
  for (auto number = payload.overflow; whole.size() < payload.bytes;
       number = pages::number32(next, 0)) {
    if (!read(number, next)) return {};
    const auto here = std::min<uint64_t>(payload.bytes - whole.size(), usable_ - 4);
    const auto part = Bytes(next).subspan(4, here);
    whole.insert(whole.end(), part.begin(), part.end());
  }
  return whole;
}

std::vector<PageFile::Row> PageFile::rows(uint32_t number) const {
  std::vector<Row> rows;
  Page page;
  if (!read(number, page)) return rows;
  const auto head = pages::treePage(page, number, usable_);
  if (!head || head->kind != pages::kTableLeaf) return rows;
  for (std::size_t i = 0; i < head->cells; ++i) {
    const auto payload = pages::payloadOf(page, *head, head->cell(page, i), usable_);
    if (!payload) continue;
    const auto whole = wholePayload(page, *payload);
    if (!whole) continue;
    if (auto values = recordOf(*whole)) rows.push_back({payload->rowid, std::move(*values)});
  }
  return rows;
}

}  // namespace orvanta
