#include "base/memory.h"

#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

namespace orvanta {
namespace {

// Never of a segment that can be written to: there the file has not what the page has.
int unmapSegments(dl_phdr_info* object, std::size_t /*size*/, void* /*data*/) {
  static const auto kPage = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  for (int i = 0; i < object->dlpi_phnum; ++i) {
    const auto& segment = object->dlpi_phdr[i];
    if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0) continue;
    const auto begin = (object->dlpi_addr + segment.p_vaddr) & ~(kPage - 1);
    const auto end = object->dlpi_addr + segment.p_vaddr + segment.p_memsz;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the linker tells addresses as numbers
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
  }
  return 0;
}

}  // namespace

void giveBackMemory() {
  malloc_trim(0);
  dl_iterate_phdr(unmapSegments, nullptr);
}

}  // namespace orvanta
