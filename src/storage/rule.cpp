#include "storage/rule.h"

namespace orvanta {

Rule Rule::read(const Cursor& row) {
  enum { kId, kField, kPattern, kCategory, kProjectId, kPriority };
  Rule rule;
  rule.id = row.int_(kId).value_or(0);
  rule.field = row.str(kField).value_or("");
  rule.pattern = row.str(kPattern).value_or("");
  rule.category = row.str(kCategory);
  rule.projectId = row.int_(kProjectId);
  rule.priority = row.int_(kPriority).value_or(0);
  return rule;
}

}  // namespace orvanta
