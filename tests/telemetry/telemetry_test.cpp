#include "telemetry/telemetry.h"

#include <libsoup/soup.h>

#include <glibmm/main.h>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <fstream>
#include <set>

#include "base/gobject_ref.h"
#include "support/documents.h"
#include "support/fake_desktop.h"
#include "support/temp_store.h"
#include "telemetry/version.h"

namespace orvanta::test {
namespace {

namespace json = boost::json;

bool byText(const json::value& a, const json::value& b) {
  return json::serialize(a) < json::serialize(b);
}

// So many zeros as a gzip file.
std::string zipped(std::size_t zeros) {
  constexpr std::size_t kPiece = std::size_t{1} << 20;
  const Ref<GOutputStream> bytes(g_memory_output_stream_new_resizable());
  const Ref<GConverter> zip(G_CONVERTER(g_zlib_compressor_new(G_ZLIB_COMPRESSOR_FORMAT_GZIP, 1)));
  const Ref<GOutputStream> stream(g_converter_output_stream_new(bytes.get(), zip.get()));
  const std::string piece(kPiece, '\0');
  for (std::size_t done = 0; done < zeros; done += kPiece) {
    g_output_stream_write_all(stream.get(), piece.data(), kPiece, nullptr, nullptr, nullptr);
  }
  g_output_stream_close(stream.get(), nullptr, nullptr);
  auto* const memory = G_MEMORY_OUTPUT_STREAM(bytes.get());
  return {static_cast<const char*>(g_memory_output_stream_get_data(memory)),
          g_memory_output_stream_get_data_size(memory)};
}

// The most memory that this process has held, KiB.
int64_t peakMemory() {
  std::ifstream status("/proc/self/status");
  int64_t kib = 0;
  for (std::string word; status >> word;) {
    if (word == "VmHWM:") status >> kib;
  }
  return kib;
}

// A web server on this machine that answers as it is told and keeps what it is sent.
class Service {
 public:
  Service() : server_(soup_server_new(nullptr, nullptr)) {
    soup_server_add_handler(server_, nullptr, handle, this, nullptr);
    soup_server_listen_local(server_, 0, SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr);
    GSList* uris = soup_server_get_uris(server_);
    port_ = g_uri_get_port(static_cast<GUri*>(uris->data));
    g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(g_uri_unref));
  }
  ~Service() { stop(); }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  void stop() {
    if (server_) g_object_unref(std::exchange(server_, nullptr));
  }
  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_); }

  guint status = SOUP_STATUS_OK;
  std::string feed = "{}";
  bool silent = false;    // takes requests and never answers
  std::string elsewhere;  // where it leads to
  std::string packed;     // sends this as a gzip file instead
  std::vector<json::value> events;
  int feedRequests = 0;

 private:
  static void handle(SoupServer* /*server*/, SoupServerMessage* message, const char* path,
                     GHashTable* /*query*/, gpointer data) {
    auto& self = *static_cast<Service*>(data);
    if (std::string_view(path) == "/api/telemetry") {
      const auto* body = soup_server_message_get_request_body(message);
      self.events.push_back(
          json::parse(std::string_view(body->data, static_cast<std::size_t>(body->length))));
      auto* headers = soup_server_message_get_request_headers(message);
      EXPECT_STREQ(soup_message_headers_get_content_type(headers, nullptr), "application/json");
      EXPECT_STREQ(soup_server_message_get_method(message), "POST");
    } else if (std::string_view(path) == "/appcast.json") {
      ++self.feedRequests;
      const auto& body = self.packed.empty() ? self.feed : self.packed;
      soup_server_message_set_response(message, "application/json", SOUP_MEMORY_COPY, body.data(),
                                       body.size());
    }
    soup_server_message_set_status(message, self.status, nullptr);
    auto* const answer = soup_server_message_get_response_headers(message);
    if (!self.elsewhere.empty()) {
      soup_message_headers_append(answer, "Location", self.elsewhere.c_str());
    }
    if (!self.packed.empty()) soup_message_headers_append(answer, "Content-Encoding", "gzip");
    if (self.silent) soup_server_message_pause(message);
  }

  SoupServer* server_;
  int port_ = 0;
};

struct TelemetryTest : testing::Test {
  void SetUp() override {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the locks of GLib and libsoup are not known to the thread sanitizer";
#endif
  }

  // Runs the main loop until the check holds; false when it does not in 5 s.
  template <class Check>
  bool until(Check check) {
    const auto end = wallClock() + 5;
    while (!check()) {
      if (wallClock() > end) return false;
      if (!Glib::MainContext::get_default()->iteration(false)) g_usleep(1000);
    }
    return true;
  }
  TempStore store;
  FakeClock clock;
  Service service;
  int checks = 0;
  Telemetry telemetry{store.db,      {"1.4.9", "12.0", "x86_64"},
                      service.url(), [this] { ++checks; },
                      clock.read(),  Calendar(Glib::TimeZone::create("Europe/Paris"))};
};

TEST_F(TelemetryTest, NothingIsSentUnlessSwitchedOn) {
  service.feed = R"({"version": "1.0", "url": "https://exemple.fr"})";
  telemetry.daily();
  telemetry.reportError("sql: oups");
  telemetry.checkUpdate();  // the user may ask all the same
  ASSERT_TRUE(until([&] { return checks == 1; }));
  EXPECT_TRUE(service.events.empty());
  EXPECT_EQ(service.feedRequests, 1);
}

TEST_F(TelemetryTest, EachEventIsSentOnceItIsAccepted) {
  const auto sent = [&](std::size_t events) {
    return until([&] { return service.events.size() == events; });
  };
  service.status = SOUP_STATUS_NO_CONTENT;  // no acceptance
  EXPECT_TRUE(telemetry.setEnabled(true));
  ASSERT_TRUE(sent(2));
  const auto id = store.db.setting("install_id");
  EXPECT_EQ(id.size(), 36U);
  const auto event = [&](const char* name) {
    return json::value({{"install_id", id},
                        {"version", "1.4.9"},
                        {"macos", "12.0"},
                        {"arch", "x86_64"},
                        {"event", name}});
  };
  EXPECT_EQ(std::multiset(service.events.begin(), service.events.end(), byText),
            (std::multiset({event("first_launch"), event("heartbeat")}, byText)));
  service.status = SOUP_STATUS_INTERNAL_SERVER_ERROR;
  telemetry.daily();
  ASSERT_TRUE(sent(4));
  service.status = SOUP_STATUS_OK;
  telemetry.daily();
  ASSERT_TRUE(sent(6));
  EXPECT_TRUE(until([&] { return store.db.setting("telemetry_first_sent") == "2023-11-14"; }));
  EXPECT_TRUE(until([&] { return store.db.setting("telemetry_last_heartbeat") == "2023-11-14"; }));
  const auto asked = service.feedRequests;
  telemetry.daily();
  ASSERT_TRUE(until([&] { return service.feedRequests > asked; }));
  EXPECT_EQ(service.events.size(), 6U) << "accepted for today";
  clock.now = clock.now + 3600;  // past midnight in Paris
  telemetry.daily();
  ASSERT_TRUE(sent(7));
  EXPECT_EQ(service.events.back(), event("heartbeat"));
  EXPECT_TRUE(telemetry.setEnabled(false));
  EXPECT_EQ(store.db.setting("install_id"), "");
}

TEST_F(TelemetryTest, WhatIsLedElsewhereIsNotAccepted) {
  Service other;
  service.status = SOUP_STATUS_FOUND;
  service.elsewhere = other.url() + "/page";
  std::optional<int> status;
  HttpClient client;
  client.post(service.url() + "/api/telemetry", "{}",
              [&](const auto& answer) { status = answer ? answer->status : 0; });
  ASSERT_TRUE(until([&] { return status.has_value(); }));
  EXPECT_EQ(status, SOUP_STATUS_FOUND);
}

TEST_F(TelemetryTest, OfALongBodyNoMoreIsUnpackedThanMayBeKept) {
  constexpr std::size_t kBomb = std::size_t{256} << 20;
  const auto fetch = [&](std::size_t size) {
    service.packed = zipped(size);
    std::optional<HttpClient::Answer> got;
    HttpClient client;
    client.get(service.url() + "/appcast.json", [&](const auto& answer) { got = answer; });
    EXPECT_TRUE(until([&] { return got.has_value(); }));
    return got ? got->body.size() : 0;
  };
  EXPECT_EQ(fetch(std::size_t{1} << 20), std::size_t{1} << 20);
  std::ofstream("/proc/self/clear_refs") << "5";  // forgets the peak so far
  const auto before = peakMemory();
  EXPECT_EQ(fetch(kBomb), 0U);
  EXPECT_LT(peakMemory() - before, 32 * 1024) << "KiB";
}

TEST_F(TelemetryTest, OneErrorADayIsToldAndCutShort) {
  store.db.setSetting("telemetry", "1");
  store.db.setSetting("install_id", "mine");
  store.db.setErrorReport([this](const std::string& message) { telemetry.reportError(message); });
  std::string characters;
  for (int i = 0; i < 600; ++i) characters += "é";
  telemetry.reportError(characters + "\xff");
  store.db.exec("SELECT nonsense");
  ASSERT_TRUE(until([&] { return !service.events.empty(); }));
  ASSERT_TRUE(until([&] { return !store.db.setting("telemetry_last_error").empty(); }));
  Telemetry restarted{store.db, {}, service.url(), {}, clock.read()};
  restarted.reportError("the same day");
  clock.now = clock.now + 86400;
  store.db.exec("SELECT nonsense");
  ASSERT_TRUE(until([&] { return service.events.size() > 1; }));
  ASSERT_EQ(service.events.size(), 2U);
  for (const auto& event : service.events) EXPECT_EQ(event.at("event"), "error");
  EXPECT_EQ(service.events.at(0).at("error").as_string(), characters.substr(0, 500 * 2));
  EXPECT_EQ(service.events.at(1).at("error"), "sql: no such column: nonsense");
  EXPECT_EQ(service.events.at(1).at("install_id"), "mine");
  std::multiset<std::string> fields;
  for (const auto& field : service.events.at(1).as_object()) fields.insert(field.key());
  EXPECT_EQ(namesOf(tablesOf("confidentialite.md").at("Ce qui peut quitter l’ordinateur")), fields);
  store.db.setErrorReport({});
}

TEST_F(TelemetryTest, TheFeedTellsOfNewerReleasesOnly) {
  const auto check = [&](const char* feed) {
    service.feed = feed;
    const auto asked = service.feedRequests + 1;
    telemetry.checkUpdate();
    EXPECT_TRUE(until([&] { return service.feedRequests == asked; }));
    until([&, end = wallClock() + 0.05] { return wallClock() > end; });  // the answer's way back
    const auto update = telemetry.updateAvailable();
    return update ? update->version + " " + update->url : "none";
  };
  EXPECT_EQ(telemetry.updateCheck(), UpdateCheck::None);
  EXPECT_EQ(check(R"({"version": "1.4.10", "url": "https://a.fr"})"), "1.4.10 https://a.fr");
  EXPECT_EQ(telemetry.updateCheck(), UpdateCheck::Done);
  for (const auto* ignored :
       {"", "[]", "{", R"({"version": "2"})", R"({"version": 2, "url": "u"})",
        "{\"version\": \"2\", \"url\": \"\xff\"}", R"({"version": "2", "url": "http://a.fr"})",
        R"({"version": "2", "url": "file:///a"})", R"({"version": "2", "url": "https:a"})",
        R"({"version": "2", "url": "http://127.0.0.1.a.fr"})"}) {
    EXPECT_EQ(check(ignored), "1.4.10 https://a.fr") << ignored;
    EXPECT_EQ(telemetry.updateCheck(), UpdateCheck::Failed) << ignored;
  }
  EXPECT_EQ(check(R"({"version": "2", "url": "HTTPS://a.fr"})"), "2 HTTPS://a.fr");
  service.status = SOUP_STATUS_NOT_FOUND;  // a body that can be read counts
  EXPECT_EQ(check(R"({"version": "1.4.9", "url": "https://a.fr"})"), "none");
}

TEST_F(TelemetryTest, ASilentOrAbsentServiceIsGivenUp) {
  HttpClient client(1);
  std::vector<bool> answered;
  const auto note = [&](const auto& answer) { answered.push_back(answer.has_value()); };
  service.silent = true;
  client.get(service.url() + "/appcast.json", note);
  client.get("pas une adresse", note);  // never called
  ASSERT_TRUE(until([&] { return answered.size() == 1; }));
  service.stop();
  client.post(service.url() + "/api/telemetry", "{}", note);
  client.get("http://nulle-part.invalid/", note);
  ASSERT_TRUE(until([&] { return answered.size() == 3; }));
  EXPECT_EQ(answered, (std::vector<bool>{false, false, false}));
}

TEST(Version, NumbersAreComparedOneByOne) {
  for (const auto& [newer, older] :
       std::vector<std::pair<const char*, const char*>>{{"1.4.10", "1.4.9"},
                                                        {"1.5", "1.4.99"},
                                                        {"1.0.1", "1.0"},
                                                        {"1..1", "1.0.9"},
                                                        {"2", "1.rc1"}}) {
    EXPECT_TRUE(isNewer(newer, older)) << newer;
    EXPECT_FALSE(isNewer(older, newer)) << older;
  }
  for (const auto& [left, right] : std::vector<std::pair<const char*, const char*>>{
           {"1.4", "1.4.0"}, {"2.0-beta", "2.0"}, {"abc", "0"}, {"", "0"}, {".1.", "1"}}) {
    EXPECT_FALSE(isNewer(left, right) || isNewer(right, left)) << left;
  }
}

}  // namespace
}  // namespace orvanta::test
