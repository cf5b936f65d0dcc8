// The page in its web view.
#pragma once

#include <gtkmm/widget.h>

#include <cstdint>
#include <functional>
#include <string>

namespace orvanta {

/// Shows the page at orvanta://app/index.html, which is read from its folder and can load nothing
/// else: a strict content-security policy, no other address to go to, no new windows, no downloads.
/// A page whose process crashed is loaded again. It is printed as printPage has it.
class PageView {
 public:
  struct Listener {
    /// Gets what the page posts to the handler "api", as JSON text on one line.
    std::function<void(const std::string& json)> posted;
    std::function<void()> loaded;  ///< it is there, and will be drawn in a moment
    std::function<void()> failed;  ///< it cannot be kept alive
  };
  explicit PageView(Listener listener);
  ~PageView();
  PageView(const PageView&) = delete;
  PageView& operator=(const PageView&) = delete;

  Gtk::Widget& widget() { return *widget_; }

  /// What the page finds as window.__first that is being loaded; nothing once it is there. `json`
  /// is JSON text; it reaches the page as data.
  void begin(const std::string& json);

  void reload();

  /// Calls the page's window.__showDay(day), once it is there.
  void showDay(const std::string& day);

  /// Gives the page a new process, as soon as nothing is open or being typed in it: a process in
  /// the sandbox does not tell a screen reader that is younger than itself what happens.
  void startAfresh();

  /// Calls the page's window.__resolve(id, answer). `json` is the answer's JSON text; it reaches
  /// the page as data.
  void resolve(int64_t id, const std::string& json);

 private:
  struct View;
  std::unique_ptr<View> view_;
  Gtk::Widget* widget_;
};

}  // namespace orvanta
