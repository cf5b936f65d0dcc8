#include "storage/ev.h"

#include "storage/category.h"

namespace orvanta {

EvReader::EvReader(StringPool& pool)
    : pool_(pool),
      unknownApp_(pool.intern(kUnknownApp)),
      unclassified_(pool.intern(textOf(Category::Nonclasse))) {}

Text EvReader::text(const Cursor& row, int column, Text& last) {
  const auto value = row.str(column);
  if (!value) return {};
  if (!last || last.view() != *value) last = pool_.intern(*value);
  return last;
}

Ev EvReader::read(const Cursor& row) {
  if (!columns_) {
    columns_ = Columns{row.column("id"),       row.column("start"),     row.column("end"),
                       row.column("app"),      row.column("bundle"),    row.column("title"),
                       row.column("url"),      row.column("domain"),    row.column("idle"),
                       row.column("category"), row.column("project_id")};
  }
  Ev ev;
  ev.id = row.int_(columns_->id).value_or(0);
  ev.start = row.dbl(columns_->start);
  ev.end = row.dbl(columns_->end);
  ev.app = text(row, columns_->app, last_.app);
  if (!ev.app) ev.app = unknownApp_;
  ev.bundle = text(row, columns_->bundle, last_.bundle);
  if (const auto title = row.str(columns_->title)) ev.title = Text::borrowed(*title);
  if (const auto url = row.str(columns_->url)) ev.url = Text::borrowed(*url);
  ev.domain = text(row, columns_->domain, last_.domain);
  ev.idle = row.int_(columns_->idle) == 1;
  ev.category = text(row, columns_->category, last_.category);
  ev.projectId = row.int_(columns_->projectId);
  ev.cat = unclassified_;
  return ev;
}

Ev EvReader::kept(Ev ev) {
  if (ev.title) ev.title = pool_.intern(ev.title.view());
  if (ev.url) ev.url = pool_.intern(ev.url.view());
  return ev;
}

}  // namespace orvanta
