// What a difference tells of the rows it touches.
#include <algorithm>
#include <array>
#include <string_view>

#include "storage/changeset.h"

namespace orvanta {
namespace {

constexpr int kId = 0;
constexpr int kStart = 1;  // columns of `events`
constexpr int kEnd = 2;
constexpr int kTitle = 5;
constexpr int kUrl = 6;
constexpr int kName = 1;  // of `projects`, where no two have the same

// A row of a difference.
class ChangedRow {
 public:
  explicit ChangedRow(sqlite3_changeset_iter* row) : row_(row) {
    const char* name = nullptr;
    if (sqlite3changeset_op(row, &name, &columns_, &operation_, nullptr) == SQLITE_OK)
      table_ = name;
  }

  std::string_view table() const { return table_; }
  int columns() const { return columns_; }
  bool updates() const { return operation_ == SQLITE_UPDATE; }

  /// As it was before, or as it comes; null for what the difference leaves alone.
  sqlite3_value* before(int column) const { return value(sqlite3changeset_old, column); }
  sqlite3_value* after(int column) const { return value(sqlite3changeset_new, column); }
  /// Of a row that comes or goes.
  sqlite3_value* held(int column) const {
    return operation_ == SQLITE_INSERT ? after(column) : before(column);
  }

  std::string key() const {
    unsigned char* isKey = nullptr;
    std::string text(table_);
    if (sqlite3changeset_pk(row_, &isKey, nullptr) != SQLITE_OK) return text;
    for (int i = 0; i < columns_; ++i) {
      if (isKey[i] == 0) continue;
      auto* part = updates() ? before(i) : held(i);
      text += '|' + std::string(textOf(part));
    }
    return text;
  }

  // All but the key, which an update names without touching it.
  uint64_t touched() const {
    if (!updates()) return ~uint64_t{0};
    uint64_t bits = 0;
    for (int i = 0; i < columns_; ++i) {
      if (after(i)) bits |= uint64_t{1} << static_cast<unsigned>(i % 64);
    }
    return bits;
  }

  static std::string_view textOf(sqlite3_value* value) {
    const auto* text = value ? reinterpret_cast<const char*>(sqlite3_value_text(value)) : nullptr;
    if (!text) return {};
    return {text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
  }

 private:
  using Get = int (*)(sqlite3_changeset_iter*, int, sqlite3_value**);
  sqlite3_value* value(Get get, int column) const {
    sqlite3_value* found = nullptr;
    const bool given = column < columns_ && get(row_, column, &found) == SQLITE_OK;
    return given ? found : nullptr;
  }

  sqlite3_changeset_iter* row_;
  std::string_view table_;
  int columns_ = 0;
  int operation_ = 0;
};

template <class Visit>
void forEachRow(const std::string& changeset, const Visit& visit) {
  sqlite3_changeset_iter* row = nullptr;
  void* bytes = const_cast<char*>(changeset.data());
  if (sqlite3changeset_start(&row, static_cast<int>(changeset.size()), bytes) != SQLITE_OK) return;
  while (sqlite3changeset_next(row) == SQLITE_ROW) visit(ChangedRow(row));
  sqlite3changeset_finalize(row);
}

bool isText(sqlite3_value* value) {
  return value && sqlite3_value_type(value) == SQLITE_TEXT;
}

}  // namespace

Touched touchedBy(const std::string& changeset) {
  Touched touched;
  forEachRow(changeset, [&](const ChangedRow& row) {
    touched[row.key()] |= row.touched();
    if (row.table() != "projects") return;
    for (auto* name : {row.before(kName), row.after(kName)}) {
      if (name) touched["name|" + std::string(ChangedRow::textOf(name))] = 1;
    }
  });
  return touched;
}

bool meet(const Touched& one, const Touched& other) {
  return std::any_of(one.begin(), one.end(), [&](const auto& entry) {
    const auto found = other.find(entry.first);
    return found != other.end() && (found->second & entry.second) != 0;
  });
}

std::optional<HeldSpans> heldSpans(const std::string& changeset) {
  std::optional<HeldSpans> held;
  forEachRow(changeset, [&](const ChangedRow& row) {
    if (row.table() != "events" || row.updates()) return;
    const auto time = [&](int column) {
      auto* value = row.held(column);
      return value ? sqlite3_value_double(value) : 0;
    };
    // A damaged span may end before it starts.
    const auto [first, last] = std::minmax({time(kStart), time(kEnd)});
    if (!held) held = HeldSpans{first, last, {}};
    held->from = std::min(held->from, first);
    held->to = std::max(held->to, last);
    if (isText(row.held(kTitle)) || isText(row.held(kUrl))) {
      held->titledFrom = std::min(held->titledFrom.value_or(time(kEnd)), time(kEnd));
    }
  });
  return held;
}

HighestIds highestIds(const std::string& changeset) {
  HighestIds highest;
  forEachRow(changeset, [&](const ChangedRow& row) {
    constexpr std::array<std::string_view, 3> kNumbered{"rules", "projects", "goals"};
    if (row.updates() || !std::ranges::count(kNumbered, row.table())) return;
    auto* value = row.held(kId);
    const int64_t id = value ? sqlite3_value_int64(value) : 0;
    if (id <= 0 || id >= kIdLimit) return;
    auto& its = highest[std::string(row.table())];
    its = std::max(its, id);
  });
  return highest;
}

std::vector<std::string> ownTexts(const std::string& changeset) {
  std::vector<std::string> texts;
  forEachRow(changeset, [&](const ChangedRow& row) {
    if (row.table() == "events") return;
    for (int i = 0; i < row.columns(); ++i) {
      for (auto* value : {row.before(i), row.after(i)}) {
        if (isText(value)) texts.emplace_back(ChangedRow::textOf(value));
      }
    }
  });
  return texts;
}

}  // namespace orvanta
