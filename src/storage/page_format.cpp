#include "storage/page_format.h"

namespace orvanta::pages {
namespace {

constexpr unsigned kByte = 8;

// How much of a payload lies on the page itself.
std::size_t localPart(uint64_t bytes, bool tableLeaf, std::size_t usable) {
  const std::size_t most = tableLeaf ? usable - 35 : (usable - 12) * 64 / 255 - 23;
  if (bytes <= most) return bytes;
  const std::size_t least = (usable - 12) * 32 / 255 - 23;
  const std::size_t even = least + (bytes - least) % (usable - 4);
  return even <= most ? even : least;
}

}  // namespace

uint32_t number16(Bytes bytes, std::size_t at) {
  if (at + 2 > bytes.size()) return 0;
  return static_cast<uint32_t>(bytes[at]) << kByte | bytes[at + 1];
}

uint32_t number32(Bytes bytes, std::size_t at) {
  if (at + 4 > bytes.size()) return 0;
  return number16(bytes, at) << 2 * kByte | number16(bytes, at + 2);
}

Varint varint(Bytes bytes, std::size_t at) {
  constexpr std::size_t kMost = 9;
  uint64_t value = 0;
  for (std::size_t i = 0; i < kMost && at + i < bytes.size(); ++i) {
    const uint8_t byte = bytes[at + i];
    if (i == kMost - 1) return {value << kByte | byte, kMost};
    value = value << 7U | (byte & 0x7fU);
    if ((byte & 0x80U) == 0) return {value, i + 1};
  }
  return {};
}

bool isPageSize(std::size_t bytes) {
  return bytes >= kSmallestPage && bytes <= kLargestPage && (bytes & (bytes - 1)) == 0;
}

std::size_t pageSizeOf(Bytes fileHeader) {
  constexpr std::size_t kAt = 16;
  const std::size_t size = number16(fileHeader, kAt);
  if (size == 1) return kLargestPage;
  return isPageSize(size) ? size : 0;
}

std::optional<TreePage> treePage(Bytes page, uint32_t pageNumber, std::size_t usable) {
  const std::size_t at = pageNumber == 1 ? kFileHeader : 0;
  if (usable > page.size() || usable < kSmallestPage - 0xff) return {};
  const uint8_t kind = page[at];
  if (kind != kIndexInterior && kind != kTableInterior && kind != kIndexLeaf &&
      kind != kTableLeaf) {
    return {};
  }
  TreePage head{.kind = static_cast<Kind>(kind),
                .cells = number16(page, at + 3),
                .pointers = at + 8,
                .content = number16(page, at + 5),
                .freeBlock = number16(page, at + 1)};
  if (head.content == 0) head.content = kLargestPage;
  if (head.interior()) {
    head.rightChild = number32(page, at + 8);
    head.pointers += 4;
  }
  if (head.pointersEnd() > usable) return {};
  return head;
}

std::optional<Payload> payloadOf(Bytes page, const TreePage& head, std::size_t cell,
                                 std::size_t usable) {
  if (head.kind == kTableInterior || cell < head.pointersEnd()) return {};
  if (head.kind == kIndexInterior) cell += 4;
  const auto bytes = varint(page.first(usable), cell);
  if (bytes.length == 0) return {};
  Payload payload{.at = cell + bytes.length, .bytes = bytes.value};
  if (head.kind == kTableLeaf) {
    const auto rowid = varint(page.first(usable), payload.at);
    if (rowid.length == 0) return {};
    payload.rowid = static_cast<int64_t>(rowid.value);
    payload.at += rowid.length;
  }
  payload.local = localPart(payload.bytes, head.kind == kTableLeaf, usable);
  const bool goesOn = payload.local < payload.bytes;
  if (payload.at + payload.local + (goesOn ? 4 : 0) > usable) return {};
  if (goesOn) payload.overflow = number32(page, payload.at + payload.local);
  return payload;
}

}  // namespace orvanta::pages
