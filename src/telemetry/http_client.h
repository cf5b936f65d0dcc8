// The program's only way to the network.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace orvanta {

/// Requests that are given up after some seconds. Main thread only; nothing blocks it. Answers come
/// on the main thread too; none comes after the client is destroyed.
class HttpClient {
 public:
  struct Answer {
    int status = 0;
    std::string body;  ///< empty when it is longer than 1 MiB, of which no more is read
  };
  /// Nothing when no answer came: no network, no such host, too late.
  using Done = std::function<void(const std::optional<Answer>&)>;

  explicit HttpClient(unsigned timeoutSeconds = 10);
  ~HttpClient();
  HttpClient(const HttpClient&) = delete;
  HttpClient& operator=(const HttpClient&) = delete;

  /// Fetches `url`, never from a cache. `done` is not called for what is no address.
  void get(const std::string& url, Done done);
  /// Posts `json` to `url`, and nowhere else: an answer that leads elsewhere is the answer.
  void post(const std::string& url, const std::string& json, Done done);

 private:
  struct Session;
  std::unique_ptr<Session> session_;
};

}  // namespace orvanta
