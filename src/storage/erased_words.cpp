#include "storage/erased_words.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "base/text.h"
#include "storage/overlap.h"

namespace orvanta {
namespace {

constexpr std::size_t kTelling = 4;  // bytes of a name that says something within a longer text

struct Shown {
  std::set<std::string> names;  // of applications and sites
  std::set<std::string> texts;  // titles and addresses
};

Shown shownIn(Transaction& change, const std::vector<TimeRange>& times) {
  static const OverlapQuery kQuery("app, domain, title, url");
  Shown shown;
  const auto take = [&](const Cursor& row) {
    for (const int column : {0, 1, 2, 3}) {
      const auto text = row.str(column).value_or("");
      if (!text.empty()) (column < 2 ? shown.names : shown.texts).emplace(text);
    }
  };
  for (const auto& time : times) {
    change.each(kQuery.longBefore, OverlapQuery::args(time), take);
    change.each(kQuery.fromShortlyBefore, OverlapQuery::args(time), take);
    // Those that last no time.
    change.each("SELECT app, domain, title, url FROM events WHERE start=?", {time.start}, take);
  }
  return shown;
}

// `words` are lines of lower-case text.
bool isLine(std::string_view words, const std::string& text) {
  for (auto at = words.find(text); at != std::string_view::npos; at = words.find(text, at + 1)) {
    const auto end = at + text.size();
    if ((at == 0 || words[at - 1] == '\n') && (end == words.size() || words[end] == '\n')) {
      return true;
    }
  }
  return false;
}

}  // namespace

ErasedWords::ErasedWords(Transaction& change, const std::vector<TimeRange>& times)
    : change_(change) {
  std::map<int64_t, std::string> worded;
  change.each("SELECT id, words FROM changes WHERE words IS NOT NULL", {}, [&](const Cursor& row) {
    worded.emplace(row.int_(0).value_or(0), row.str(1).value_or(""));
  });
  if (worded.empty()) return;
  const auto shown = shownIn(change, times);
  std::set<std::string, std::less<>> lines;
  for (const auto& [id, words] : worded) {
    for (std::string_view rest = words; !rest.empty();) {
      const auto end = std::min(rest.find('\n'), rest.size());
      lines.emplace(rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }
  const auto look = [&](const std::string& text, bool within) {
    const auto lower = lowerCase(text);
    if (!within && !lines.contains(lower)) return;
    for (const auto& [id, words] : worded) {
      const bool found = within ? words.find(lower) != std::string::npos : isLine(words, lower);
      if (found) entries_[text].push_back(id);
    }
  };
  for (const auto& name : shown.names) look(name, name.size() >= kTelling);
  for (const auto& text : shown.texts) look(text, false);
}

void ErasedWords::drop() {
  std::set<int64_t> gone;
  for (const auto& [text, ids] : entries_) {
    // Each look goes through all spans.
    if (std::all_of(ids.begin(), ids.end(), [&](auto id) { return gone.contains(id); })) continue;
    bool left = false;
    change_.each("SELECT 1 FROM events WHERE app=?1 OR domain=?1 OR title=?1 OR url=?1 LIMIT 1",
                 {text}, [&](const Cursor&) { left = true; });
    if (left) continue;
    for (const auto id : ids) change_.run("DELETE FROM changes WHERE id=?", {id});
    gone.insert(ids.begin(), ids.end());
  }
}

}  // namespace orvanta
