#include "capture/last_input.h"

#include <fmt/format.h>

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <optional>

#include "base/exact_json.h"
#include "storage/ev.h"

namespace orvanta::last_input {
namespace {

namespace json = boost::json;

constexpr auto kSetting = "last_input";

std::optional<Kept> kept(Database& db) {
  const auto text = db.setting(kSetting);
  const auto value = text.empty() ? std::nullopt : parseJson(text);
  const auto* pair = value ? value->if_array() : nullptr;
  if (!pair || pair->size() != 2 || !pair->at(0).is_int64() || !pair->at(1).is_number()) return {};
  return Kept{pair->at(0).get_int64(), pair->at(1).to_number<double>()};
}

}  // namespace

void keep(Transaction& change, const Kept& kept) {
  const auto text = kept == Kept() ? "" : json::serialize(json::array{kept.span, kept.at});
  change.run("INSERT OR REPLACE INTO settings(key, value) VALUES (?, ?)", {kSetting, text});
}

void endKilledRun(Database& db) {
  const auto last = kept(db);
  if (!last) return;
  Transaction change(db);
  std::optional<double> start;
  // Nothing was recorded since by a program that does not keep it.
  change.each(
      "SELECT start FROM events WHERE id=?1 AND idle=0 AND end > ?2 "
      "AND id=(SELECT max(id) FROM events)",
      {last->span, last->at}, [&](const Cursor& row) { start = row.dbl(0); });
  if (start) {
    // What the capture has recorded, and nobody has said anything of; nothing that a clock gone
    // wrong has put later still.
    constexpr std::string_view kRecorded =
        "end > ?1 AND start <= ?3 AND idle=0 AND id > 0 AND category IS NULL AND bundle IS NOT ?2";
    const Args args{last->at, std::string(kImportBundle), *start};
    change.run(fmt::format("DELETE FROM events WHERE start >= ?1 AND {}", kRecorded), args);
    change.run(fmt::format("UPDATE events SET end=?1 WHERE start < ?1 AND {}", kRecorded), args);
  }
  keep(change, {});
  change.commit().forget();
}

}  // namespace orvanta::last_input
