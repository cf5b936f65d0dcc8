#include "storage/activity_list.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <random>
#include <system_error>
#include <tuple>
#include <utility>

#include "base/own_file.h"
#include "base/owned_fd.h"
#include "storage/activity_time.h"
#include "storage/flat_file.h"

namespace orvanta {
namespace {

constexpr uint32_t kNoText = UINT32_MAX;
constexpr std::array kTextsOf{&Ev::app, &Ev::domain, &Ev::title, &Ev::url, &Ev::category};

struct Listed {
  std::array<uint32_t, kTextsOf.size()> sizes{kNoText, kNoText, kNoText, kNoText, kNoText};
  uint32_t hasProject = 0;
  int64_t project = 0;

  bool erased() const { return sizes.front() == kNoText; }
  std::size_t bytes() const {
    std::size_t sum = 0;
    for (const auto size : sizes) sum += size == kNoText ? 0 : size;
    return sum;
  }
};

struct Head {
  std::array<char, 8> form{'O', 'r', 'v', 'A', 'c', 't', 'L', '\n'};
  uint64_t name = 0;
  uint64_t checksum = 0;
  uint64_t activities = 0;
  uint64_t textBytes = 0;

  uint64_t following() const { return activities * sizeof(Listed) + textBytes; }
};

// Goes from part to part.
class Parts {
 public:
  explicit Parts(const std::filesystem::path& path)
      : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK)) {
    struct stat info{};
    if (file_ && fstat(file_.get(), &info) == 0) size_ = static_cast<uint64_t>(info.st_size);
  }

  /// The next one's head; false at the end, and where none can be.
  bool next() {
    end_ += heads_.empty() ? 0 : sizeof(Head) + head().following();
    if (!file_ || lseek(file_.get(), static_cast<off_t>(end_), SEEK_SET) < 0) return false;
    if (!flat::readInto(file_.get(), 1, heads_)) return false;
    const auto left = size_ - std::min(size_, end_ + sizeof(Head));
    return head().form == Head().form && head().activities <= left && head().textBytes <= left &&
           head().following() <= left;
  }
  const Head& head() const { return heads_.front(); }
  /// What follows the head. False when it is no good.
  bool read() {
    return flat::readInto(file_.get(), head().activities, activities) &&
           flat::readInto(file_.get(), head().textBytes, texts) &&
           flat::Sum().add(activities).add(texts).value() == head().checksum &&
           wholeTexts() == texts.size();
  }
  /// Where the part begins.
  uint64_t begin() const { return end_; }
  uint64_t size() const { return size_; }

  std::vector<Listed> activities;
  std::string texts;

 private:
  std::size_t wholeTexts() const {
    std::size_t sum = 0;
    for (const auto& one : activities) sum += one.bytes();
    return sum;
  }

  const OwnedFd file_;
  uint64_t size_ = 0;
  uint64_t end_ = 0;  // of what is behind us
  std::vector<Head> heads_;
};

std::string partOf(uint64_t name, const std::string& activities, const std::string& texts) {
  const Head head{.name = name,
                  .checksum = flat::Sum().add(activities).add(texts).value(),
                  .activities = activities.size() / sizeof(Listed),
                  .textBytes = texts.size()};
  std::string all;
  all.reserve(sizeof(head) + head.following());
  flat::append(all, std::array{head});
  return all.append(activities).append(texts);
}

uint64_t randomName() {
  std::random_device device;
  return (uint64_t{device()} << 32) | device() | 1;  // never 0
}

bool writeAt(int file, uint64_t place, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(place));
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
    place += static_cast<uint64_t>(written);
  }
  return true;
}

}  // namespace

std::vector<uint64_t> ActivityList::parts() const {
  std::vector<uint64_t> names;
  for (Parts parts(file_); parts.next();) names.push_back(parts.head().name);
  return names;
}

ActivityList::Shown ActivityList::each(StringPool& texts,
                                       const std::function<void(const Ev*)>& visit) const {
  Shown shown;
  // Neighbours have most of their texts in common.
  std::array<Text, kTextsOf.size()> latest;
  for (Parts parts(file_); parts.next() && parts.read();) {
    const char* at = parts.texts.data();
    for (const auto& one : parts.activities) {
      Ev ev;
      for (std::size_t i = 0; i < kTextsOf.size(); ++i) {
        const auto size = one.sizes.at(i);
        if (size == kNoText) continue;
        const std::string_view text(std::exchange(at, at + size), size);
        const bool own = kTextsOf.at(i) == &Ev::title || kTextsOf.at(i) == &Ev::url;
        auto& last = latest.at(i);
        if (own) {
          last = Text::borrowed(text);
        } else if (!last || last.view() != text) {
          last = texts.intern(text);
        }
        ev.*kTextsOf.at(i) = last;
      }
      if (one.hasProject != 0) ev.projectId = one.project;
      visit(one.erased() ? nullptr : &ev);
    }
    shown.parts.push_back(parts.head().name);
    shown.bytes = parts.begin() + sizeof(Head) + parts.head().following();
  }
  return shown;
}

bool ActivityList::keepOnly(const std::vector<bool>& numbers) const {
  std::string all;
  std::size_t number = 0;
  std::size_t kept = 0;
  bool same = true;
  Parts parts(file_);
  while (parts.next() && parts.read()) {
    std::string texts;
    std::size_t at = 0;
    for (auto& one : parts.activities) {
      const auto bytes = one.bytes();
      const bool keep = number < numbers.size() && numbers[number];
      if (keep) texts.append(parts.texts, at, bytes);
      same = same && (keep || one.erased());
      if (!keep) one = {};
      kept += keep ? 1 : 0;
      at += bytes;
      ++number;
    }
    std::string activities;
    flat::append(activities, parts.activities);
    all += partOf(parts.head().name, activities, texts);
  }
  if (same && parts.begin() == parts.size()) return true;
  if (kept >= number - kept && !writeOwnFile(file_, all)) return true;
  std::error_code error;
  std::filesystem::remove(file_, error);
  return !error;
}

ActivityNumbers::ActivityNumbers(const ActivityList& list) : file_(list.file()) {
  StringPool texts;
  const auto shown = list.each(texts, [&](const Ev* ev) {
    if (!ev || !numbered(hashOfActivity(*ev)).second) ++count_;
  });
  if (!shown.parts.empty()) part_ = shown.parts.back();
  end_ = shown.bytes;
}

// With whether it is a new one.
std::pair<uint32_t, bool> ActivityNumbers::numbered(uint64_t hash) {
  if (numbers_.size() == kMost) numbers_.clear();
  const auto [at, isNew] = numbers_.try_emplace(hash, count_);
  if (isNew) ++count_;
  return {at->second, isNew};
}

uint32_t ActivityNumbers::of(const Ev& ev) {
  const auto [number, isNew] = numbered(hashOfActivity(ev));
  if (!isNew) return number;
  if (activities_.empty()) part_ = randomName();
  Listed listed{.hasProject = ev.projectId ? 1U : 0U, .project = ev.projectId.value_or(0)};
  for (std::size_t i = 0; i < kTextsOf.size(); ++i) {
    const auto text = ev.*kTextsOf.at(i);
    if (!text) continue;
    listed.sizes.at(i) = static_cast<uint32_t>(text.view().size());
    texts_ += text.view();
  }
  flat::append(activities_, std::array{listed});
  return number;
}

// What no part has a head for is cut off first.
bool ActivityNumbers::store() {
  if (activities_.empty()) return true;
  constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
  const OwnedFd file(
      open(file_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kOwnerOnly));
  const auto bytes = partOf(part_, activities_, texts_);
  const auto end = static_cast<off_t>(end_);
  if (!file || ftruncate(file.get(), end) != 0) return false;
  if (!writeAt(file.get(), end_, bytes)) {
    // Only to give a full disk its room back. Where it stays, half a part is no part: nobody reads
    // it, the next one takes its place, and what is erased is taken out of it as of the others.
    std::ignore = ftruncate(file.get(), end);
    return false;
  }
  end_ += bytes.size();
  activities_.clear();
  texts_.clear();
  return true;
}

}  // namespace orvanta
