#include "app/handover.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <cstdlib>
#include <string>

#include "base/program_files.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr auto kVariable = "ORVANTA_HANDOVER";
constexpr unsigned kFirstFile = 3;  // after the standard ones

std::string written(const Handover& left) {
  json::object words{{"lock", left.lock}, {"paused", left.paused}};
  if (left.project) {
    words["project"] = *left.project;
    words["since"] = left.projectSince;
  }
  return json::serialize(words);
}

}  // namespace

std::optional<Handover> takeHandover() {
  const char* words = std::getenv(kVariable);
  if (!words) return {};
  boost::system::error_code broken;
  const auto parsed = json::parse(words, broken);
  unsetenv(kVariable);  // not for the programs that we start
  if (broken || !parsed.is_object()) return {};
  const auto& fields = parsed.get_object();
  Handover left;
  if (const auto* lock = fields.if_contains("lock"); lock && lock->is_int64()) {
    left.lock = static_cast<int>(lock->get_int64());
  }
  if (const auto* paused = fields.if_contains("paused"); paused && paused->is_bool()) {
    left.paused = paused->get_bool();
  }
  const auto* project = fields.if_contains("project");
  const auto* since = fields.if_contains("since");
  if (project && project->is_int64() && since && since->is_double()) {
    left.project = project->get_int64();
    left.projectSince = since->get_double();
  }
  return left;
}

void handOver(const Handover& left) {
  const auto program = ownProgram();
  setenv(kVariable, written(left).c_str(), 1);
  // Whoever made a file of ours may have forgotten to say that it is ours alone.
  close_range(kFirstFile, ~0U, CLOSE_RANGE_CLOEXEC);
  if (left.lock >= 0) fcntl(left.lock, F_SETFD, 0);
  auto name = program.string();
  std::array<char*, 2> words{name.data(), nullptr};
  execv(program.c_str(), words.data());
  execv("/proc/self/exe", words.data());  // the file has been removed
}

}  // namespace orvanta
