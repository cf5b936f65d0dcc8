#include "storage/activities.h"

namespace orvanta {

bool Activities::each(const Wants& wants, const Take& take) {
  ActivityGroups groups(calendar_, wants);
  EvReader reader(texts_);
  const bool whole =
      db_.scan("SELECT id,start,end,app,domain,title,url,idle,category,project_id FROM events", {},
               [&](const Cursor& row) { groups.add(reader.read(row)); });
  groups.tell(take);
  return whole;
}

}  // namespace orvanta
