#include "dashboard/paper.h"

#include <algorithm>
#include <memory>
#include <string>

#include "base/display_text.h"
#include "base/gobject_ref.h"

namespace orvanta {
namespace {

using Chars = std::unique_ptr<char, decltype(&g_free)>;

// The engine does not heed what the style says of the paper.
constexpr auto kPaper =
    "(() => { const paper = document.querySelector('.paper'); return {"
    "name: paper?.querySelector('h2')?.textContent ?? document.title,"
    "across: paper?.matches('.landscape') ?? false}; })()";

struct Paper {
  std::string name;
  bool across = false;
};

// What the page says of it; hostile text like all of the page.
Paper paperOf(JSCValue* answer) {
  constexpr std::size_t kLongest = 80;
  if (!answer || jsc_value_is_object(answer) == FALSE) return {"Orvanta"};
  const Ref<JSCValue> name(jsc_value_object_get_property(answer, "name"));
  const Ref<JSCValue> across(jsc_value_object_get_property(answer, "across"));
  const Chars text(jsc_value_to_string(name.get()), g_free);
  Paper paper{oneLine(text.get(), kLongest), jsc_value_to_boolean(across.get()) != FALSE};
  std::replace(paper.name.begin(), paper.name.end(), '/', '-');
  if (paper.name.empty() || paper.name.front() == '.') paper.name.insert(0, "_");
  return paper;
}

Ref<GtkPageSetup> pageSetup(bool across) {
  constexpr double kMargin = 14;  // mm, as the page's style has it
  constexpr double kMarginAcross = 12;
  const double margin = across ? kMarginAcross : kMargin;
  Ref<GtkPageSetup> setup(gtk_page_setup_new());
  auto* const size = gtk_paper_size_new(GTK_PAPER_NAME_A4);
  gtk_page_setup_set_paper_size(setup.get(), size);
  gtk_paper_size_free(size);
  gtk_page_setup_set_orientation(
      setup.get(), across ? GTK_PAGE_ORIENTATION_LANDSCAPE : GTK_PAGE_ORIENTATION_PORTRAIT);
  gtk_page_setup_set_top_margin(setup.get(), margin, GTK_UNIT_MM);
  gtk_page_setup_set_bottom_margin(setup.get(), margin, GTK_UNIT_MM);
  gtk_page_setup_set_left_margin(setup.get(), margin, GTK_UNIT_MM);
  gtk_page_setup_set_right_margin(setup.get(), margin, GTK_UNIT_MM);
  return setup;
}

// As the toolkit calls its printer that writes files.
std::string& lastPrinter() {
  static std::string printer = g_dgettext("gtk40", "Print to File");
  return printer;
}

Ref<GtkPrintSettings> settingsFor(const Paper& paper) {
  const auto* documents = g_get_user_special_dir(G_USER_DIRECTORY_DOCUMENTS);
  const bool there = documents && g_file_test(documents, G_FILE_TEST_IS_DIR) != FALSE;
  Ref<GtkPrintSettings> settings(gtk_print_settings_new());
  gtk_print_settings_set_printer(settings.get(), lastPrinter().c_str());
  gtk_print_settings_set(settings.get(), GTK_PRINT_SETTINGS_OUTPUT_FILE_FORMAT, "pdf");
  gtk_print_settings_set(settings.get(), GTK_PRINT_SETTINGS_OUTPUT_BASENAME, paper.name.c_str());
  gtk_print_settings_set(settings.get(), GTK_PRINT_SETTINGS_OUTPUT_DIR,
                         there ? documents : g_get_home_dir());
  return settings;
}

void failed(WebKitPrintOperation* /*operation*/, GError* error, gpointer view) {
  auto* const window = GTK_WINDOW(gtk_widget_get_root(GTK_WIDGET(view)));
  auto* const dialog = gtk_message_dialog_new(window, GTK_DIALOG_MODAL, GTK_MESSAGE_ERROR,
                                              GTK_BUTTONS_CLOSE, "%s", "L’impression a échoué.");
  gtk_message_dialog_format_secondary_text(GTK_MESSAGE_DIALOG(dialog), "%s", error->message);
  g_signal_connect(dialog, "response", G_CALLBACK(gtk_window_destroy), nullptr);
  gtk_window_present(GTK_WINDOW(dialog));
}

void print(WebKitWebView* view, const Paper& paper) {
  auto* const operation = webkit_print_operation_new(view);
  const auto setup = pageSetup(paper.across);
  const auto settings = settingsFor(paper);
  webkit_print_operation_set_page_setup(operation, setup.get());
  webkit_print_operation_set_print_settings(operation, settings.get());
  g_signal_connect_object(operation, "failed", G_CALLBACK(failed), view, G_CONNECT_DEFAULT);
  auto* const root = gtk_widget_get_root(GTK_WIDGET(view));
  if (webkit_print_operation_run_dialog(operation, root ? GTK_WINDOW(root) : nullptr) !=
      WEBKIT_PRINT_OPERATION_RESPONSE_PRINT) {
    g_object_unref(operation);
    return;
  }
  g_signal_connect(operation, "finished", G_CALLBACK(g_object_unref), nullptr);
  const auto* printer =
      gtk_print_settings_get_printer(webkit_print_operation_get_print_settings(operation));
  if (printer) lastPrinter() = printer;
}

void toldOfPaper(GObject* view, GAsyncResult* result, gpointer /*data*/) {
  const Ref<JSCValue> answer(
      webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, nullptr));
  if (answer) print(WEBKIT_WEB_VIEW(view), paperOf(answer.get()));
}

}  // namespace

void printPage(WebKitWebView* view) {
  webkit_web_view_evaluate_javascript(view, kPaper, -1, nullptr, nullptr, nullptr, toldOfPaper,
                                      nullptr);
}

}  // namespace orvanta
