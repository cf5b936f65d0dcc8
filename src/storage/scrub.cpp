#include "storage/scrub.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "base/owned_fd.h"
#include "storage/file_connection.h"
#include "storage/page_format.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

class Scrubber {
 public:
  Scrubber(int file, std::size_t pageSize, std::size_t usable, uint32_t pages)
      : file_(file), pageSize_(pageSize), usable_(usable), seen_(pages + std::size_t{1}) {}

  // Also what hangs below it.
  bool tree(uint32_t root);
  bool freePages();

 private:
  using Page = std::vector<uint8_t>;

  // Each page once, whatever points to it in a damaged file.
  bool mayVisit(uint32_t page) {
    if (page == 0 || page >= seen_.size() || seen_[page]) return false;
    return seen_[page] = true;
  }
  off_t offset(uint32_t page) const { return static_cast<off_t>(pageSize_) * (page - off_t{1}); }
  bool read(uint32_t number, Page& page) const {
    page.resize(pageSize_);
    return pread(file_, page.data(), pageSize_, offset(number)) == static_cast<ssize_t>(pageSize_);
  }
  bool write(uint32_t number, const Page& page) const {
    return pwrite(file_, page.data(), pageSize_, offset(number)) == static_cast<ssize_t>(pageSize_);
  }
  bool clearAndWrite(uint32_t number, Page& page, std::size_t from) {
    return !clear(page, from, usable_) || write(number, page);
  }
  // Whether there was something.
  static bool clear(Page& page, std::size_t from, std::size_t to);
  bool clearUnused(Page& page, const pages::TreePage& head) const;
  bool overflow(const pages::Payload& payload);

  int file_;
  std::size_t pageSize_;
  std::size_t usable_;
  std::vector<bool> seen_;
};

bool Scrubber::clear(Page& page, std::size_t from, std::size_t to) {
  if (from >= to || to > page.size()) return false;
  const auto begin = page.begin() + static_cast<std::ptrdiff_t>(from);
  const auto end = page.begin() + static_cast<std::ptrdiff_t>(to);
  if (std::all_of(begin, end, [](uint8_t byte) { return byte == 0; })) return false;
  std::fill(begin, end, 0);
  return true;
}

// Between the cells' positions and the cells, and among the cells.
bool Scrubber::clearUnused(Page& page, const pages::TreePage& head) const {
  constexpr std::size_t kBlockHead = 4;
  bool changed = clear(page, head.pointersEnd(), std::min(head.content, usable_));
  std::size_t last = 0;
  for (auto block = head.freeBlock; block > last && block + kBlockHead <= usable_;
       block = pages::number16(page, block)) {
    const std::size_t size = pages::number16(page, block + 2);
    changed = clear(page, block + kBlockHead, std::min(block + size, usable_)) || changed;
    last = block;
  }
  return changed;
}

// The end of a payload rarely fills its last page.
bool Scrubber::overflow(const pages::Payload& payload) {
  Page page;
  uint64_t left = payload.bytes - payload.local;
  for (uint32_t number = payload.overflow; left > 0 && mayVisit(number);
       number = pages::number32(page, 0)) {
    if (!read(number, page)) return false;
    const auto here = std::min<uint64_t>(left, usable_ - 4);
    if (!clearAndWrite(number, page, 4 + here)) return false;
    left -= here;
  }
  return true;
}

bool Scrubber::tree(uint32_t root) {
  std::vector<uint32_t> waiting{root};
  while (!waiting.empty()) {
    const auto number = waiting.back();
    waiting.pop_back();
    Page page;
    if (!mayVisit(number)) continue;
    if (!read(number, page)) return false;
    const auto head = pages::treePage(page, number, usable_);
    if (!head) continue;
    if (clearUnused(page, *head) && !write(number, page)) return false;
    if (head->interior()) waiting.push_back(head->rightChild);
    for (std::size_t i = 0; i < head->cells; ++i) {
      const auto cell = head->cell(page, i);
      if (head->interior()) waiting.push_back(pages::number32(page, cell));
      const auto payload = pages::payloadOf(page, *head, cell, usable_);
      if (payload && payload->overflow != 0 && !overflow(*payload)) return false;
    }
  }
  return true;
}

bool Scrubber::freePages() {
  Page trunk;
  Page leaf;
  if (!read(1, trunk)) return false;
  for (uint32_t number = pages::number32(trunk, pages::kFreelistHead); mayVisit(number);
       number = pages::number32(trunk, 0)) {
    if (!read(number, trunk)) return false;
    const auto count = std::min<std::size_t>(pages::number32(trunk, 4), usable_ / 4 - 2);
    for (std::size_t i = 0; i < count; ++i) {
      const auto free = pages::number32(trunk, 8 + 4 * i);
      if (!mayVisit(free)) continue;
      if (!read(free, leaf) || !clearAndWrite(free, leaf, 0)) return false;
    }
    if (!clearAndWrite(number, trunk, 8 + 4 * count)) return false;
  }
  return true;
}

}  // namespace

bool scrubUnusedBytes(const fs::path& path) {
  std::vector<uint32_t> roots{1};
  uint32_t pageCount = 0;
  {
    const auto connection = FileConnection::reading(path);
    if (!connection) return false;
    pageCount = static_cast<uint32_t>(connection.number("PRAGMA page_count"));
    const int code = connection.each(
        "SELECT rootpage FROM sqlite_master WHERE rootpage > 0", {}, [&](const Cursor& row) {
          roots.push_back(static_cast<uint32_t>(row.int_(0).value_or(0)));
        });
    if (code != SQLITE_DONE) return false;
  }
  constexpr std::size_t kReservedAt = 20;
  const OwnedFd file(open(path.c_str(), O_RDWR | O_CLOEXEC));
  std::vector<uint8_t> header(pages::kFileHeader);
  if (!file ||
      pread(file.get(), header.data(), header.size(), 0) != static_cast<ssize_t>(header.size())) {
    return false;
  }
  const auto pageSize = pages::pageSizeOf(header);
  if (pageSize == 0) return false;
  Scrubber scrubber(file.get(), pageSize, pageSize - header[kReservedAt], pageCount);
  // First the trees: a page that a damaged file counts as free as well keeps its rows.
  return std::all_of(roots.begin(), roots.end(),
                     [&](uint32_t root) { return scrubber.tree(root); }) &&
         scrubber.freePages();
}

}  // namespace orvanta
