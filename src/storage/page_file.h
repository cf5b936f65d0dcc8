// A store file's pages and rows, read without SQLite's help.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <unordered_map>
#include <vector>

#include "base/owned_fd.h"
#include "storage/page_format.h"
#include "storage/value.h"

namespace orvanta {

/// The pages of an SQLite file and of the log beside it, as the last good commit left them. Reads
/// any bytes: what makes no sense yields nothing. For a file that does not change meanwhile.
class PageFile {
 public:
  using Page = std::vector<uint8_t>;
  struct Row {
    int64_t rowid = 0;
    Args values;  ///< of the record; text in the file's own encoding, NULL for a blob
  };

  /// Absent when it cannot be read or holds no pages.
  static std::optional<PageFile> open(const std::filesystem::path& file);

  uint32_t pages() const { return pages_; }
  /// Whether the log holds writes that cannot be read any more.
  bool logCut() const { return logCut_; }

  /// The pages that the file says are not in use; empty when what it says cannot be true.
  std::vector<bool> freePages() const;

  /// The rows on a page that ends a table's tree, those that can be read; none on another page.
  std::vector<Row> rows(uint32_t number) const;

 private:
  PageFile() = default;
  bool read(uint32_t number, Page& page) const;
  void findPageSize(const Page& header, std::size_t inLog);
  std::size_t leavesWithSize(std::size_t pageSize) const;
  std::optional<std::vector<uint8_t>> wholePayload(const Page& page,
                                                   const pages::Payload& payload) const;

  OwnedFd file_;
  OwnedFd log_;
  uint64_t bytes_ = 0;
  std::size_t pageSize_ = 0;
  std::size_t usable_ = 0;
  uint32_t pages_ = 0;
  bool logCut_ = false;
  std::unordered_map<uint32_t, uint64_t> inLog_;  // page to offset of its newest version
};

}  // namespace orvanta
