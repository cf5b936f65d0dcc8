#include <fmt/format.h>

#include <map>

#include "bridge/sheet_json.h"
#include "reports/french_text.h"

namespace orvanta {

namespace json = boost::json;

namespace {

// A sheet that was kept may be of a version that knew less: what it lacks is null.
json::value at(const json::object& object, std::string_view key) {
  const auto* value = object.if_contains(key);
  return value ? *value : json::value(nullptr);
}

json::array listAt(const json::object& object, std::string_view key) {
  auto value = at(object, key);
  return value.is_array() ? std::move(value.get_array()) : json::array();
}

json::object objectOf(const json::value& value) {
  return value.is_object() ? value.get_object() : json::object();
}

std::string textAt(const json::object& object, std::string_view key) {
  return plainText(at(object, key));
}

int64_t numberAt(const json::object& object, std::string_view key) {
  const auto value = at(object, key);
  return value.is_int64() ? value.get_int64() : 0;
}

class Changes {
 public:
  Changes(const json::object& sent, const json::object& now) : sent_(sent), now_(now) {}
  json::array list();

 private:
  using Rows = std::map<int64_t, json::object>;

  std::string hours(int64_t seconds) const {
    return textAt(sent_, "hours") == "decimal" ? decimalHours(seconds) : clockHours(seconds);
  }
  std::string difference(int64_t sent, int64_t now) const {
    return (now < sent ? "−" : "+") + hours(now < sent ? sent - now : now - sent);
  }
  Rows rowsOf(const json::object& sheet) const;
  json::object& add(std::string_view kind, const std::string& about, const json::value& sent,
                    const json::value& now, const std::string& sentText,
                    const std::string& nowText);
  json::object* compareTimes(std::string_view kind, const std::string& about,
                             const json::value& sent, const json::value& now);
  void compareText(std::string_view kind, const std::string& about, const json::object& sent,
                   const json::object& now, std::string_view key);
  void compareRow(const json::object& sent, const json::object& now);
  void compareCells(const std::string& about, const json::object& sent, const json::object& now,
                    const json::value& project);
  void compareAmounts();

  const json::object& sent_;
  const json::object& now_;
  json::array list_;
};

Changes::Rows Changes::rowsOf(const json::object& sheet) const {
  Rows rows;
  for (const auto& row : listAt(sheet, "rows")) {
    rows[numberAt(objectOf(row), "project_id")] = objectOf(row);
  }
  return rows;
}

json::object& Changes::add(std::string_view kind, const std::string& about, const json::value& sent,
                           const json::value& now, const std::string& sentText,
                           const std::string& nowText) {
  return list_
      .emplace_back(json::object{
          {"kind", kind},
          {"about", about},
          {"sent", sent},
          {"now", now},
          {"sent_text", sentText},
          {"now_text", nowText},
          {"text", fmt::format("{}\u00a0: {} → {}", about, sentText.empty() ? "rien" : sentText,
                               nowText.empty() ? "rien" : nowText)}})
      .get_object();
}

// Of a cell or a total what is printed counts; null is nothing.
json::object* Changes::compareTimes(std::string_view kind, const std::string& about,
                                    const json::value& sent, const json::value& now) {
  const auto before = objectOf(sent);
  const auto after = objectOf(now);
  const auto was = numberAt(before, "seconds");
  const auto is = numberAt(after, "seconds");
  if (was == is) return nullptr;
  auto& change = add(kind, about, was, is, hours(was), hours(is));
  change["change"] = is - was;
  change["change_text"] = difference(was, is);
  return &change;
}

void Changes::compareText(std::string_view kind, const std::string& about, const json::object& sent,
                          const json::object& now, std::string_view key) {
  const auto shown = [&](const json::object& row) {
    const auto value = at(row, key);
    if (value.is_bool()) return std::string(value.get_bool() ? "oui" : "non");
    return value.is_null() ? std::string() : plainText(value);
  };
  if (shown(sent) == shown(now)) return;
  add(kind, about, at(sent, key), at(now, key), shown(sent), shown(now))["project_id"] =
      at(sent, "project_id");
}

void Changes::compareCells(const std::string& about, const json::object& sent,
                           const json::object& now, const json::value& project) {
  const auto was = listAt(sent, "cells");
  const auto is = listAt(now, "cells");
  const auto columns = listAt(sent_, "columns");
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const auto column = objectOf(columns[i]);
    auto* change = compareTimes("cell", fmt::format("{}, {}", about, textAt(column, "label")),
                                i < was.size() ? was[i] : json::value(nullptr),
                                i < is.size() ? is[i] : json::value(nullptr));
    if (!change) continue;
    (*change)["project_id"] = project;
    (*change)["column"] = column;
  }
}

void Changes::compareRow(const json::object& sent, const json::object& now) {
  const auto name = textAt(sent, "name");
  const auto project = at(sent, "project_id");
  compareText("name", "Nom de «\u00a0" + name + "\u00a0»", sent, now, "name");
  compareText("client", name + ", client", sent, now, "client");
  compareText("terms", name + ", tarif", sent, now, "rate_text");
  compareText("terms", name + ", facturable", sent, now, "billable");
  compareText("rounding", name + ", arrondi", objectOf(at(sent, "rounding")),
              objectOf(at(now, "rounding")), "text");
  compareCells(name, sent, now, project);
  if (auto* change = compareTimes("total", name + ", total", sent, now)) {
    (*change)["project_id"] = project;
  }
  compareText("amount", name + ", montant", sent, now, "amount");
}

void Changes::compareAmounts() {
  const auto amounts = [](const json::object& sheet) {
    std::string text;
    for (const auto& amount : listAt(objectOf(at(sheet, "totals")), "amounts")) {
      text += (text.empty() ? "" : " + ") + textAt(objectOf(amount), "text");
    }
    return text;
  };
  if (const auto was = amounts(sent_), is = amounts(now_); was != is) {
    add("amount", "Montant", json::value(was), json::value(is), was, is);
  }
}

json::array Changes::list() {
  const auto was = rowsOf(sent_);
  const auto is = rowsOf(now_);
  const auto only = [&](std::string_view kind, const json::object& row, bool sent) {
    const auto time = hours(numberAt(row, "seconds"));
    auto& change =
        add(kind, textAt(row, "name"), sent ? at(row, "seconds") : json::value(0),
            sent ? json::value(0) : at(row, "seconds"), sent ? time : "", sent ? "" : time);
    change["project_id"] = at(row, "project_id");
  };
  for (const auto& [id, row] : was) {
    const auto found = is.find(id);
    found == is.end() ? only("row_gone", row, true) : compareRow(row, found->second);
  }
  for (const auto& [id, row] : is) {
    if (!was.contains(id)) only("row_new", row, false);
  }
  compareTimes("total", "Total", at(sent_, "totals"), at(now_, "totals"));
  compareAmounts();
  return std::move(list_);
}

}  // namespace

json::array sheetChanges(const json::object& sent, const json::object& now) {
  return Changes(sent, now).list();
}

}  // namespace orvanta
