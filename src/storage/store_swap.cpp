#include "storage/store_swap.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include "base/files.h"
#include "storage/backup_names.h"
#include "storage/file_connection.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

constexpr auto kNew = ".nouveau-";

bool isThere(const fs::path& file) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(file, ignored));
}

fs::path with(const fs::path& file, const std::string& suffix) {
  return file.string() + suffix;
}

std::string freeSuffix(const fs::path& store, const Aside& aside) {
  const auto suffix = fmt::format("{}-{}", aside.why, localStamp(aside.now, aside.calendar));
  for (int number = 1;; ++number) {
    auto tried = number == 1 ? suffix : fmt::format("{}-{}", suffix, number);
    const auto kept = with(store, "." + tried);
    if (!isThere(kept) && !isThere(walOf(kept)) && !isThere(with(store, kNew + tried)))
      return tried;
  }
}

// Under another name when somebody has put something there meanwhile: nothing is overwritten.
bool moveAside(const fs::path& from, const fs::path& to) {
  if (!isThere(from) || renameToNew(from, to)) return true;
  for (int number = 2; errno == EEXIST; ++number) {
    if (renameToNew(from, with(to, fmt::format("-{}", number)))) return true;
  }
  return false;
}

// What `pending` says is to be done; each step is passed over when it has been done.
bool carryOut(const fs::path& store, const fs::path& pending, const fs::path& kept,
              const std::function<void()>& afterStep) {
  std::error_code error;
  if (!moveAside(walOf(store), walOf(kept))) return false;
  afterStep();
  // The program makes an empty file where there was none: nothing to keep, unless its log is all.
  const bool empty = bytesOf(store) == 0 && (isThere(kept) || !isThere(walOf(kept)));
  if (empty ? !fs::remove(store, error) && error : !moveAside(store, kept)) return false;
  afterStep();
  fs::remove(shmOf(store), error);
  fs::remove(with(store, "-journal"), error);
  afterStep();
  if (bytesOf(pending) == 0) {
    fs::remove(pending, error);
  } else {
    fs::rename(pending, store, error);
  }
  afterStep();
  return !error && syncToDisk(store.parent_path());
}

SwapResult swap(const fs::path& store, const std::function<bool(const fs::path&)>& makePending,
                const Aside& aside) {
  if (!finishSwap(store)) return {};
  const auto suffix = freeSuffix(store, aside);
  const auto pending = with(store, kNew + suffix);
  const auto kept = with(store, "." + suffix);
  if (!makePending(pending) || !syncToDisk(store.parent_path())) return {};
  aside.afterStep();
  SwapResult result{.done = carryOut(store, pending, kept, aside.afterStep)};
  if (isThere(kept)) result.kept = kept;
  return result;
}

}  // namespace

SwapResult keepAside(const fs::path& store, const Aside& aside) {
  return swap(store, makeNewFile, aside);
}

SwapResult replaceStore(const fs::path& store, const fs::path& ready, const Aside& aside) {
  if (bytesOf(ready) == 0) return {};
  const auto makePending = [&](const fs::path& pending) { return renameToNew(ready, pending); };
  return swap(store, makePending, aside);
}

bool finishSwap(const fs::path& store) {
  const auto prefix = store.filename().string() + kNew;
  std::vector<fs::path> found;
  std::error_code error;
  for (fs::directory_iterator entry(store.parent_path(), error), end; !error && entry != end;
       entry.increment(error)) {
    if (entry->path().filename().string().starts_with(prefix)) found.push_back(entry->path());
  }
  return std::all_of(found.begin(), found.end(), [&](const fs::path& pending) {
    const auto suffix = pending.filename().string().substr(prefix.size());
    return carryOut(store, pending, with(store, "." + suffix), [] {});
  });
}

}  // namespace orvanta
