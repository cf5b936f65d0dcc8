// What the history of changes knows of spans that are erased.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "storage/transaction.h"

namespace orvanta {

/// Finds the entries that name an application, a site, a title or an address which erasing takes
/// out of the store: a rule that was learned of it, and its label. Made before the spans are
/// erased, in the same transaction.
class ErasedWords {
 public:
  ErasedWords(Transaction& change, const std::vector<TimeRange>& times);

  /// To be called afterwards: drops the entries that name what no span shows any more.
  void drop();

 private:
  Transaction& change_;
  std::map<std::string, std::vector<int64_t>> entries_;  // that name the text
};

}  // namespace orvanta
