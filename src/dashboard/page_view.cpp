#include "dashboard/page_view.h"

#include <fmt/format.h>
#include <webkit/webkit.h>

#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>

#include "base/gobject_ref.h"
#include "dashboard/page_files.h"
#include "dashboard/paper.h"
#include "dashboard/window_size.h"

namespace orvanta {
namespace {

constexpr auto kScheme = "orvanta";
constexpr std::string_view kOrigin = "orvanta://app/";
constexpr auto kIndex = "orvanta://app/index.html";
constexpr auto kPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; "
    "font-src 'self'; connect-src 'none'; base-uri 'none'; form-action 'none'; "
    "frame-ancestors 'none'";

using Chars = std::unique_ptr<char, decltype(&g_free)>;

// Shown in place of the page where its files are not.
constexpr std::string_view kMissing =
    "<!doctype html><html lang=\"fr\"><meta charset=\"utf-8\">"
    "<meta name=\"color-scheme\" content=\"light dark\"><title>Orvanta</title>"
    "<h1>La page d’Orvanta est introuvable</h1>"
    "<p>Ses fichiers ne sont pas installés, ou une mise à jour les a déplacés. Quittez Orvanta et "
    "relancez-le&nbsp;; si cette page revient, réinstallez-le. Vos données sont intactes et "
    "l’enregistrement continue.";

void serve(WebKitURISchemeRequest* request, gpointer /*data*/) {
  const std::string_view uri = webkit_uri_scheme_request_get_uri(request);
  auto file = uri.starts_with(kOrigin)
                  ? pageFile(pageFolder(), webkit_uri_scheme_request_get_path(request))
                  : std::nullopt;
  char* bytes = nullptr;
  gsize size = 0;
  bool read = file && g_file_get_contents(file->path.c_str(), &bytes, &size, nullptr) != FALSE;
  if (!read && uri == kIndex) {
    file = {{}, "text/html; charset=utf-8"};
    size = kMissing.size();
    bytes = g_strndup(kMissing.data(), size);
    read = true;
  }
  if (!read) {
    GError* error = g_error_new_literal(G_IO_ERROR, G_IO_ERROR_NOT_FOUND, "not a file of the page");
    webkit_uri_scheme_request_finish_error(request, error);
    g_error_free(error);
    return;
  }
  const Ref<GInputStream> stream(
      g_memory_input_stream_new_from_data(bytes, static_cast<gssize>(size), g_free));
  const Ref<WebKitURISchemeResponse> response(
      webkit_uri_scheme_response_new(stream.get(), static_cast<gint64>(size)));
  webkit_uri_scheme_response_set_content_type(response.get(), file->mimeType.c_str());
  auto* const headers = soup_message_headers_new(SOUP_MESSAGE_HEADERS_RESPONSE);
  soup_message_headers_append(headers, "Content-Security-Policy", kPolicy);
  soup_message_headers_append(headers, "Cache-Control", "no-store");
  webkit_uri_scheme_response_set_http_headers(response.get(), headers);  // takes them over
  webkit_uri_scheme_request_finish_with_response(request, response.get());
}

gboolean decide(WebKitWebView* /*view*/, WebKitPolicyDecision* decision,
                WebKitPolicyDecisionType type, gpointer /*data*/) {
  if (type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION) {
    webkit_policy_decision_ignore(decision);
    return TRUE;
  }
  if (type != WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) return FALSE;
  auto* const action = webkit_navigation_policy_decision_get_navigation_action(
      WEBKIT_NAVIGATION_POLICY_DECISION(decision));
  const std::string_view uri =
      webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  if (uri.starts_with(kOrigin)) return FALSE;
  webkit_policy_decision_ignore(decision);
  return TRUE;
}

void refuseDownload(WebKitNetworkSession* /*session*/, WebKitDownload* download,
                    gpointer /*data*/) {
  webkit_download_cancel(download);
}

// The page waits for what is done here, and cannot tell of itself meanwhile: an operation of our
// own.
gboolean print(WebKitWebView* view, WebKitPrintOperation* /*operation*/, gpointer /*data*/) {
  printPage(view);
  return TRUE;
}

bool automated() {
  const char* wanted = std::getenv("ORVANTA_AUTOMATION");
  return wanted && std::string_view(wanted) == "1";
}

}  // namespace

struct PageView::View {
  Listener listener;
  Ref<WebKitWebContext> context;
  Ref<WebKitNetworkSession> session;
  Ref<WebKitUserContentManager> content;
  WebKitWebView* web = nullptr;
  gint64 lastCrash = 0;   // microseconds of the monotonic clock
  guint startAfresh = 0;  // a timer, until the page is at rest
  std::string day;        // to be shown when the page is there; "" for none

  static void received(WebKitUserContentManager* /*content*/, JSCValue* message, gpointer data) {
    const Chars json(jsc_value_to_json(message, 0), g_free);
    if (json) static_cast<View*>(data)->listener.posted(json.get());
  }

  // What was true when the page was loaded is not when it is loaded again.
  static void loading(WebKitWebView* /*web*/, WebKitLoadEvent event, gpointer data) {
    if (event != WEBKIT_LOAD_FINISHED) return;
    auto* const view = static_cast<View*>(data);
    webkit_user_content_manager_remove_all_scripts(view->content.get());
    view->listener.loaded();
    view->showDay();
  }

  void showDay() {
    if (day.empty() || webkit_web_view_is_loading(web) != FALSE) return;
    GVariantDict arguments;
    g_variant_dict_init(&arguments, nullptr);
    g_variant_dict_insert(&arguments, "day", "s", std::exchange(day, {}).c_str());
    webkit_web_view_call_async_javascript_function(web, "window.__showDay(day);", -1,
                                                   g_variant_dict_end(&arguments), nullptr, nullptr,
                                                   nullptr, nullptr, nullptr);
  }

  static gboolean askWhetherAtRest(gpointer data) {
    auto* const view = static_cast<View*>(data);
    webkit_web_view_evaluate_javascript(view->web, "window.__atRest()", -1, nullptr, nullptr,
                                        nullptr, toldWhetherAtRest, data);
    return G_SOURCE_CONTINUE;
  }
  static void toldWhetherAtRest(GObject* web, GAsyncResult* result, gpointer data) {
    const Ref<JSCValue> atRest(
        webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(web), result, nullptr));
    // Without an answer the view may be gone, too.
    if (!atRest || !jsc_value_to_boolean(atRest.get())) return;
    auto* const view = static_cast<View*>(data);
    if (view->startAfresh == 0) return;
    g_source_remove(std::exchange(view->startAfresh, 0));
    webkit_web_view_terminate_web_process(view->web);
  }

  static void crashed(WebKitWebView* web, WebKitWebProcessTerminationReason reason, gpointer data) {
    constexpr gint64 kTenSeconds = gint64{10} * G_USEC_PER_SEC;
    auto* const view = static_cast<View*>(data);
    if (reason == WEBKIT_WEB_PROCESS_TERMINATED_BY_API) {
      webkit_web_view_load_uri(web, kIndex);
      return;
    }
    const auto now = g_get_monotonic_time();
    if (view->lastCrash != 0 && now - view->lastCrash < kTenSeconds) {
      view->listener.failed();
      return;
    }
    view->lastCrash = now;
    webkit_web_view_load_uri(web, kIndex);
  }

  static WebKitWebView* automate(WebKitAutomationSession* /*session*/, gpointer data) {
    return static_cast<View*>(data)->web;
  }
  static void allowAutomation(WebKitWebContext* /*context*/, WebKitAutomationSession* session,
                              gpointer data) {
    g_signal_connect(session, "create-web-view", G_CALLBACK(automate), data);
  }
};

PageView::PageView(Listener listener) : view_(std::make_unique<View>()) {
  auto& view = *view_;
  view.listener = std::move(listener);

  view.context.reset(webkit_web_context_new());
  webkit_web_context_register_uri_scheme(view.context.get(), kScheme, serve, nullptr, nullptr);
  auto* const security = webkit_web_context_get_security_manager(view.context.get());
  webkit_security_manager_register_uri_scheme_as_secure(security, kScheme);
  webkit_web_context_set_cache_model(view.context.get(), WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
  if (automated()) {
    webkit_web_context_set_automation_allowed(view.context.get(), TRUE);
    g_signal_connect(view.context.get(), "automation-started", G_CALLBACK(View::allowAutomation),
                     view_.get());
  }

  // What the page keeps for itself (its view, its date) lies with the window's size.
  const auto data = stateFolder() / "page";
  const auto cache = std::filesystem::path(g_get_user_cache_dir()) / "orvanta";
  view.session.reset(webkit_network_session_new(data.c_str(), cache.c_str()));
  g_signal_connect(view.session.get(), "download-started", G_CALLBACK(refuseDownload), nullptr);

  view.content.reset(webkit_user_content_manager_new());
  g_signal_connect(view.content.get(), "script-message-received::api", G_CALLBACK(View::received),
                   view_.get());
  webkit_user_content_manager_register_script_message_handler(view.content.get(), "api", nullptr);

  const Ref<WebKitSettings> settings(webkit_settings_new_with_settings(
      "enable-developer-extras", TRUE, "hardware-acceleration-policy",
      WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER, "enable-webgl", FALSE, "enable-webaudio", FALSE,
      "javascript-can-open-windows-automatically", FALSE, "enable-back-forward-navigation-gestures",
      FALSE, nullptr));
  view.web = WEBKIT_WEB_VIEW(g_object_new(
      WEBKIT_TYPE_WEB_VIEW, "web-context", view.context.get(), "network-session",
      view.session.get(), "user-content-manager", view.content.get(), "settings", settings.get(),
      "is-controlled-by-automation", static_cast<gboolean>(automated()), nullptr));
  g_signal_connect(view.web, "decide-policy", G_CALLBACK(decide), nullptr);
  g_signal_connect(view.web, "print", G_CALLBACK(print), nullptr);
  g_signal_connect(view.web, "web-process-terminated", G_CALLBACK(View::crashed), view_.get());
  g_signal_connect(view.web, "load-changed", G_CALLBACK(View::loading), view_.get());
  const GdkRGBA clear{0, 0, 0, 0};  // the window shows through until the page paints
  webkit_web_view_set_background_color(view.web, &clear);
  webkit_web_view_load_uri(view.web, kIndex);

  widget_ = Glib::wrap(GTK_WIDGET(view.web));
}

PageView::~PageView() {
  if (view_->startAfresh != 0) g_source_remove(view_->startAfresh);
  g_signal_handlers_disconnect_by_data(view_->content.get(), view_.get());
}

void PageView::begin(const std::string& json) {
  // The page that is there asks for itself, and by the next one this is old.
  if (webkit_web_view_is_loading(view_->web) == FALSE) return;
  // A JSON text is also a literal of the language that the page is written in.
  const auto source = fmt::format("window.__first = JSON.parse({});",
                                  boost::json::serialize(boost::json::value(json)));
  auto* const script =
      webkit_user_script_new(source.c_str(), WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
                             WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr);
  webkit_user_content_manager_add_script(view_->content.get(), script);
  webkit_user_script_unref(script);
}

void PageView::reload() {
  webkit_web_view_reload(view_->web);
}

void PageView::showDay(const std::string& day) {
  view_->day = day;
  view_->showDay();
}

void PageView::startAfresh() {
  if (view_->startAfresh != 0) return;
  view_->startAfresh = g_timeout_add_seconds(1, View::askWhetherAtRest, view_.get());
}

void PageView::resolve(int64_t id, const std::string& json) {
  GVariantDict arguments;
  g_variant_dict_init(&arguments, nullptr);
  g_variant_dict_insert(&arguments, "id", "d", static_cast<double>(id));
  g_variant_dict_insert(&arguments, "text", "s", json.c_str());
  webkit_web_view_call_async_javascript_function(
      view_->web, "window.__resolve(id, JSON.parse(text));", -1, g_variant_dict_end(&arguments),
      nullptr, nullptr, nullptr, nullptr, nullptr);
}

}  // namespace orvanta
