#include "reports/search_words.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/folded.h"
#include "base/text.h"

namespace orvanta {
namespace {

constexpr std::size_t kMostWords = 16;

// The quotation mark at the beginning of `text`, or nothing.
std::string_view quoteAt(std::string_view text) {
  constexpr std::array<std::string_view, 5> kQuotes{"\"", "“", "”", "«", "»"};
  const auto* const found =
      std::find_if(kQuotes.begin(), kQuotes.end(),
                   [&](std::string_view quote) { return text.starts_with(quote); });
  return found == kQuotes.end() ? std::string_view() : *found;
}

class Words {
 public:
  void add(std::string_view text, bool quoted) {
    const auto plain = folded(text);
    std::string_view rest = trimBlanks(plain);
    if (quoted) return take(rest);
    while (!rest.empty()) {
      const auto word = rest.substr(0, rest.find(' '));
      take(word);
      rest = trimBlanks(rest.substr(word.size()));
    }
  }

  std::vector<std::string> list;

 private:
  void take(std::string_view word) {
    const bool known = std::find(list.begin(), list.end(), word) != list.end();
    if (!word.empty() && !known && list.size() < kMostWords) list.emplace_back(word);
  }
};

}  // namespace

std::vector<std::string> searchWords(std::string_view typed) {
  Words words;
  bool quoted = false;
  for (std::size_t begin = 0, at = 0;;) {
    const auto quote = quoteAt(typed.substr(at));
    if (at < typed.size() && quote.empty()) {
      ++at;
      continue;
    }
    words.add(typed.substr(begin, at - begin), quoted);
    if (at == typed.size()) return words.list;
    quoted = !quoted;
    begin = at += quote.size();
  }
}

SearchedWords::SearchedWords(std::vector<std::string> words, const Projects& projects)
    : words_(std::move(words)), projects_(projects) {}

SearchedWords::Mask SearchedWords::look(std::string_view text) {
  folded_.clear();
  appendFolded(folded_, text);
  Mask mask = 0;
  for (std::size_t i = 0; i < words_.size(); ++i) {
    if (folded_.find(words_[i]) != folded_.npos) mask |= Mask{1} << i;
  }
  return mask;
}

SearchedWords::Mask SearchedWords::in(Text text) {
  if (text.view().empty()) return 0;
  const auto [at, isNew] = known_.try_emplace(text.id(), 0);
  if (isNew) at->second = look(text.view());
  return at->second;
}

SearchedWords::Mask SearchedWords::in(const std::optional<int64_t>& project) {
  if (!project) return 0;
  const auto [at, isNew] = projectsIn_.try_emplace(*project, 0);
  const auto found = projects_.find(*project);
  if (isNew && found != projects_.end()) at->second = look(found->second.name);
  return at->second;
}

SearchedWords::Mask SearchedWords::in(const Ev& ev) {
  Mask mask = in(ev.app) | in(ev.domain) | in(ev.pid);
  for (const auto text : {ev.title, ev.url}) {
    if (mask == all() || text.view().empty()) continue;
    const auto [at, isNew] = titles_.try_emplace(StringPool::hashOf(text.view()), 0);
    if (isNew) at->second = look(text.view());
    mask |= at->second;
  }
  return mask;
}

}  // namespace orvanta
