#include "telemetry/http_client.h"

#include <libsoup/soup.h>

#include <memory>
#include <utility>

#include "base/gobject_ref.h"

namespace orvanta {
namespace {

constexpr gsize kMostBytes = 1 << 20;  // our own feed is some hundred

struct Request {
  Ref<SoupSession> session;
  Ref<SoupMessage> message;
  HttpClient::Done done;
  Ref<GCancellable> cancel;
  guint deadline = 0;
  Ref<GInputStream> body;
  std::string bytes;  // the beginning of the body
};

// The session's own time-out only watches for silence; this one is for the whole request.
gboolean giveUp(gpointer data) {
  auto* request = static_cast<Request*>(data);
  request->deadline = 0;
  g_cancellable_cancel(request->cancel.get());
  return G_SOURCE_REMOVE;
}

void finish(const Request& request, const std::optional<HttpClient::Answer>& answer) {
  if (request.deadline != 0) g_source_remove(request.deadline);
  request.done(answer);
}

void bodyRead(GObject* /*body*/, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<Request> request(static_cast<Request*>(data));
  gsize size = 0;
  if (g_input_stream_read_all_finish(request->body.get(), result, &size, nullptr) == FALSE) {
    finish(*request, {});
    return;
  }
  request->bytes.resize(size <= kMostBytes ? size : 0);
  finish(*request, HttpClient::Answer{
                       .status = static_cast<int>(soup_message_get_status(request->message.get())),
                       .body = std::move(request->bytes)});
}

// No more of the body is taken, and unpacked, than may be kept: it could be any size.
void answered(GObject* /*session*/, GAsyncResult* result, gpointer data) {
  std::unique_ptr<Request> request(static_cast<Request*>(data));
  request->body.reset(soup_session_send_finish(request->session.get(), result, nullptr));
  if (!request->body) {
    finish(*request, {});
    return;
  }
  constexpr gsize kOneTooMany = kMostBytes + 1;
  request->bytes.resize(kOneTooMany);
  auto* const body = request->body.get();
  auto* const cancel = request->cancel.get();
  auto* const bytes = request->bytes.data();
  g_input_stream_read_all_async(body, bytes, kOneTooMany, G_PRIORITY_DEFAULT, cancel, bodyRead,
                                request.release());
}

}  // namespace

struct HttpClient::Session {
  unsigned timeoutSeconds;
  Ref<SoupSession> soup;
  std::shared_ptr<bool> alive = std::make_shared<bool>(true);

  void send(SoupMessage* raw, Done done) {
    if (!raw) return;
    // Made by the first request: most users never send any.
    if (!soup) {
      soup.reset(
          soup_session_new_with_options("timeout", timeoutSeconds, "idle-timeout", 1U, nullptr));
    }
    auto request = std::make_unique<Request>();
    request->session.reset(SOUP_SESSION(g_object_ref(soup.get())));
    request->message.reset(raw);
    request->cancel.reset(g_cancellable_new());
    request->done = [alive = std::weak_ptr(alive), done = std::move(done)](const auto& answer) {
      if (!alive.expired()) done(answer);
    };
    request->deadline = g_timeout_add_seconds(timeoutSeconds, giveUp, request.get());
    auto* const message = request->message.get();
    auto* const cancel = request->cancel.get();
    soup_session_send_async(soup.get(), message, G_PRIORITY_DEFAULT, cancel, answered,
                            request.release());
  }
};

HttpClient::HttpClient(unsigned timeoutSeconds)
    : session_(std::make_unique<Session>(Session{.timeoutSeconds = timeoutSeconds})) {}

HttpClient::~HttpClient() {
  session_->alive.reset();
  if (session_->soup) soup_session_abort(session_->soup.get());
}

void HttpClient::get(const std::string& url, Done done) {
  auto* const message = soup_message_new(SOUP_METHOD_GET, url.c_str());
  if (message) {
    soup_message_headers_append(soup_message_get_request_headers(message), "Cache-Control",
                                "no-cache");
  }
  session_->send(message, std::move(done));
}

void HttpClient::post(const std::string& url, const std::string& json, Done done) {
  auto* const message = soup_message_new(SOUP_METHOD_POST, url.c_str());
  if (message) {
    const std::unique_ptr<GBytes, decltype(&g_bytes_unref)> body(
        g_bytes_new(json.data(), json.size()), g_bytes_unref);
    soup_message_set_request_body_from_bytes(message, "application/json", body.get());
    // Elsewhere it would be asked for as a page, and a page is no acceptance.
    soup_message_add_flags(message, SOUP_MESSAGE_NO_REDIRECT);
  }
  session_->send(message, std::move(done));
}

}  // namespace orvanta
