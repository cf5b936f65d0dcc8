#include "store_maker/span_writer.h"

#include <algorithm>

namespace orvanta {

void SpanWriter::add(const MadeSpan& span) {
  const double end = std::min(span.end, now_);
  if (end <= span.start) return;
  change_.run(
      "INSERT INTO events(start,end,app,bundle,title,url,domain,idle,category,project_id) "
      "VALUES (?,?,?,?,?,?,?,?,?,?)",
      {span.start, end, span.app, "org.example." + span.app, span.title, span.url, span.domain,
       span.idle, span.category, span.project});
}

}  // namespace orvanta
