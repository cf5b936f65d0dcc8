#include "storage/rule.h"

namespace orvanta {

Rule Rule::fromRow(const Row& row) {
  return {
      .id = row.int_("id").value_or(0),
      .field = row.str("field").value_or(""),
      .pattern = row.str("pattern").value_or(""),
      .category = row.str("category"),
      .projectId = row.int_("project_id"),
      .priority = row.int_("priority").value_or(0),
  };
}

}  // namespace orvanta
