#include "storage/id_marks.h"

#include <algorithm>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <utility>

namespace orvanta {

namespace json = boost::json;

std::optional<HighestIds> markedIds(Transaction& change) {
  std::optional<HighestIds> marked;
  change.each("SELECT value FROM settings WHERE key='highest_ids'", {}, [&](const Cursor& row) {
    boost::system::error_code broken;
    const auto stored = json::parse(row.str(0).value_or(""), broken);
    if (broken || !stored.is_object()) return;
    HighestIds ids;
    for (const auto& [table, id] : stored.get_object()) {
      if (!id.is_int64()) return;
      ids[table] = std::clamp(id.get_int64(), int64_t{0}, kIdLimit - 1);
    }
    marked = std::move(ids);
  });
  return marked;
}

void markIds(Transaction& change, const HighestIds& ids) {
  change.run("INSERT OR REPLACE INTO settings(key, value) VALUES ('highest_ids', ?)",
             {json::serialize(json::object(ids.begin(), ids.end()))});
}

void raiseMarks(Transaction& change, const HighestIds& ids) {
  const auto before = markedIds(change);
  if (!before) return;
  auto marks = *before;
  for (const auto& [table, id] : ids) marks[table] = std::max(marks[table], id);
  if (marks != *before) markIds(change, marks);
}

}  // namespace orvanta
