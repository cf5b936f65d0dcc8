// One recorded span of time.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/string_pool.h"
#include "storage/statement.h"

namespace orvanta {

/// What a row without an application counts under.
inline constexpr std::string_view kUnknownApp = "Inconnu";

/// What a moment that the user added by hand has for an application, and for its id.
inline constexpr std::string_view kManualApp = "Hors écran";
inline constexpr std::string_view kManualBundle = "fr.quellvane.orvanta.manual";
/// What another program has recorded has this for its application's id.
inline constexpr std::string_view kImportBundle = "fr.quellvane.orvanta.import";

/// A row of `events` and, once classified, what it counts as. A plain value; its texts live in the
/// pool that it was read into.
struct Ev {
  int64_t id = 0;
  double start = 0;  ///< Unix seconds
  double end = 0;    ///< Unix seconds
  Text app;          ///< kUnknownApp when the row has none
  Text bundle;
  Text title;
  Text url;
  Text domain;
  bool idle = false;
  Text category;                     ///< set by hand
  std::optional<int64_t> projectId;  ///< set by hand, or by the project chosen while recording

  // Filled in by the classifier; not to be read before.
  Text cat;  ///< effective category
  std::optional<int64_t> pid;
  bool manual = false;

  /// Seconds; 0 for a span that ends before it starts.
  double duration() const { return end > start ? end - start : 0; }
};

/// Reads spans from the rows of one statement over `events`, whatever its column order. Looks the
/// columns up once; a row costs no map.
class EvReader {
 public:
  /// `pool` outlives the spans read.
  explicit EvReader(StringPool& pool);

  /// The row's span. Its title and address, of which a year has as many as spans, are the row's
  /// own; what is to be looked at longer is to be kept().
  Ev read(const Cursor& row);
  Ev kept(Ev ev);

 private:
  // The text of a column, and that of the row before, which is often the same.
  Text text(const Cursor& row, int column, Text& last);

  StringPool& pool_;
  Text unknownApp_;
  Text unclassified_;
  struct Columns {
    int id, start, end, app, bundle, title, url, domain, idle, category, projectId;
  };
  std::optional<Columns> columns_;
  struct Last {
    Text app, bundle, domain, category;
  };
  Last last_;
};

}  // namespace orvanta
