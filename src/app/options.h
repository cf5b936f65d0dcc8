// The words of the command line.
#pragma once

#include <giomm/application.h>
#include <glibmm/variantdict.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// What was asked for on a command line, as GLib has read it.
class Options {
 public:
  /// Makes the options known to `application`, and to its --help.
  static void addTo(Gio::Application& application);

  /// `parsed` are those of addTo().
  explicit Options(GVariantDict* parsed);

  /// Whether the option of this name, without dashes, was given.
  bool has(std::string_view name) const;
  /// What was given for the option of this name, which takes a word.
  std::optional<std::string> value(const std::string& name) const;
  /// Whether there are such.
  bool hasValues() const { return !values_.empty(); }
  /// The words that are no options: bytes as they were typed.
  const std::vector<std::string>& words() const { return words_; }
  /// Neither options nor words.
  bool empty() const { return given_.empty() && words_.empty() && values_.empty(); }

 private:
  std::vector<std::string_view> given_;
  std::vector<std::string> words_;
  std::map<std::string, std::string> values_;
};

}  // namespace orvanta
