// What the pages of an SQLite file look like: https://www.sqlite.org/fileformat2.html
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace orvanta::pages {

using Bytes = std::span<const uint8_t>;

inline constexpr std::size_t kFileHeader = 100;  // before the first page's own
inline constexpr std::size_t kFreelistHead = 32;
inline constexpr std::size_t kSmallestPage = 512;
inline constexpr std::size_t kLargestPage = 65536;

enum Kind : uint8_t { kIndexInterior = 2, kTableInterior = 5, kIndexLeaf = 10, kTableLeaf = 13 };

/// Numbers are stored with the high byte first; 0 for what lies beyond the end.
uint32_t number16(Bytes bytes, std::size_t at);
uint32_t number32(Bytes bytes, std::size_t at);

struct Varint {
  uint64_t value = 0;
  std::size_t length = 0;  ///< 0 when it does not end within the bytes
};
Varint varint(Bytes bytes, std::size_t at);

/// Whether SQLite has pages of this size.
bool isPageSize(std::size_t bytes);

/// The page size in a file's header; 0 when it is none.
std::size_t pageSizeOf(Bytes fileHeader);

/// The head of a page of a tree.
struct TreePage {
  Kind kind;
  std::size_t cells;
  std::size_t pointers;     ///< where the array of cell positions begins
  std::size_t content;      ///< where the cells begin
  std::size_t freeBlock;    ///< the first block of free bytes among them, 0 for none
  uint32_t rightChild = 0;  ///< of an interior page

  bool interior() const { return kind == kIndexInterior || kind == kTableInterior; }
  bool table() const { return kind == kTableInterior || kind == kTableLeaf; }
  std::size_t pointersEnd() const { return pointers + 2 * cells; }
  /// Where the cell lies.
  std::size_t cell(Bytes page, std::size_t index) const {
    return number16(page, pointers + 2 * index);
  }
};

/// Absent when `page`, of which the first `usable` bytes are used, is no page of a tree.
std::optional<TreePage> treePage(Bytes page, uint32_t pageNumber, std::size_t usable);

/// Where a cell keeps its payload; what does not fit on the page goes on in a chain of others.
struct Payload {
  std::size_t at = 0;     ///< on the page
  uint64_t bytes = 0;     ///< in all
  std::size_t local = 0;  ///< of them on the page
  uint32_t overflow = 0;  ///< the first page of the chain, 0 for none
  int64_t rowid = 0;      ///< of a table
};

/// Absent for an interior cell of a table, which has none, and for one that leaves the page.
std::optional<Payload> payloadOf(Bytes page, const TreePage& head, std::size_t cell,
                                 std::size_t usable);

}  // namespace orvanta::pages
