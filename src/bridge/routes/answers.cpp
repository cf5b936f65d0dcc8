#include "bridge/routes/routes.h"

namespace orvanta {

namespace json = boost::json;

namespace {

json::value toJson(const Value& value) {
  if (const auto* number = value.integer()) return *number;
  if (const auto* number = value.real()) return *number;
  if (const auto* text = value.text()) return json::string(*text);
  return nullptr;
}

}  // namespace

json::object told(Core& core, const Written& written, json::object answer) {
  if (written) return answer;
  answer["stored"] = false;
  answer["message"] = core.db.whyNot(written);
  return answer;
}

json::array rowsOf(Core& core, std::string_view sql) {
  json::array list;
  const bool all = core.db.each(sql, {}, [&](const Cursor& row) {
    json::object object;
    for (int i = 0; i < row.columns(); ++i) object[row.name(i)] = toJson(row.value(i));
    list.push_back(std::move(object));
  });
  if (!all) throw AppError(troubleOr(core, "le fichier des données ne peut pas être lu"));
  return list;
}

std::string troubleOr(Core& core, const std::string& otherwise) {
  const auto condition = core.db.condition();
  return condition ? std::string(sentenceOf(condition->trouble)) : otherwise;
}

Date dateIn(Core& core, const Body& body, std::string_view key) {
  const auto text = body.s(key);
  const auto date = text ? Date::parse(*text) : std::nullopt;
  return date ? *date : core.analytics.today();
}

DateRange datesIn(Core& core, const Body& body) {
  const auto from = dateIn(core, body, "from");
  const DateRange range{from, body.s("to") ? dateIn(core, body, "to") : from};
  if (range.to < range.from) throw AppError("la fin de la période précède son début");
  if (range.days() > kMostDays) throw AppError("période trop longue : vingt ans au plus");
  return range;
}

TimeRange rangeIn(const Body& body) {
  const auto start = body.d("start");
  const auto end = body.d("end");
  if (!start || !end) throw AppError("plage invalide");
  return {*start, *end};
}

std::optional<std::string> projectName(Core& core, const std::optional<int64_t>& id) {
  std::optional<std::string> name;
  if (!id) return name;
  core.db.each("SELECT name FROM projects WHERE id=?", {*id},
               [&](const Cursor& row) { name = row.str(0); });
  return name;
}

boost::json::object unwritten(const std::string& problem) {
  return {{"ok", true},
          {"written", false},
          {"message", "L’export n’a pas pu être écrit : " + problem + "."}};
}

std::string_view storedText(const std::string& text) {
  return std::string_view(text).substr(0, text.find('\0'));
}

json::value textOrNull(std::string_view text) {
  return text.empty() ? json::value(nullptr) : json::value(text);
}

}  // namespace orvanta
