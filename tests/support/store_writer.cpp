// Does to a store all that writes to it, as fast as it can, printing after each tick the wall-clock
// time up to which it has recorded. For a test that kills it.
#include <fmt/format.h>

#include <boost/json/serialize.hpp>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string_view>

#include "classify/assign_range.h"
#include "classify/defaults.h"
#include "storage/store_swap.h"
#include "support/program.h"
#include "support/random_store.h"

namespace {

using namespace orvanta;

class StoreWriter {
 public:
  StoreWriter(const char* folder, double begin) : program_(folder), begin_(begin) {
    clock_.now = begin;
    seedDefaults(program_.store.db, clock_.read());
    engine_ = std::make_unique<Engine>(program_.store.db, program_.desktop.collectors, live_,
                                       clock_.read(), clock_.uptime());
    program_.call("projects.save", R"({"name": "Client"})");
  }

  void tick() {
    auto& desktop = program_.desktop;
    if (dice_.oneIn(20)) {
      desktop.show(fmt::format("App{}", dice_.upTo(8)), fmt::format("Titre {}", dice_.upTo(98)));
    }
    if (dice_.oneIn(300)) away_ = 150;
    desktop.idle = away_-- > 0 ? desktop.idle + Engine::kTickSeconds : 0;
    clock_.now = clock_.now + Engine::kTickSeconds;
    engine_->tick();
    fmt::print("{:.3f}\n", clock_.now - desktop.idle);
    std::fflush(stdout);
  }

  void change() {
    switch (dice_.upTo(7)) {
      case 0:
        program_.call("rules.save", R"({"field": "domain", "pattern": "sauf.fr"})");
        break;
      case 1: {
        const auto id = program_.call("projects.save", R"({"name": "Passager"})");
        if (!id.as_object().contains("id")) break;
        assignRange(id.at("id").as_int64());
        program_.call("projects.delete", fmt::format(R"({{"id": {}}})", id.at("id").as_int64()));
        break;
      }
      case 2:
        program_.call("settings.set", R"({"min_span_seconds": 10, "idle_threshold": 180})");
        break;
      case 3:
      case 4:
        assignRange({});
        break;
      case 5: {  // as nothing is recorded in between, the store stays as it is
        const auto made = program_.call("store.backup");
        if (!made.as_object().contains("file")) break;
        program_.call("store.restore",
                      boost::json::serialize(boost::json::object{{"file", made.at("file")}}));
        break;
      }
      default:
        turnLast();
    }
  }

 private:
  // As the route does with the tracker's engine.
  void assignRange(std::optional<int64_t> project) {
    TimeRange range{begin_ + dice_.upTo(static_cast<int>(clock_.now - begin_)) - 300.5, 0};
    range.end = range.start + dice_.upTo(600);
    if (!engine_->hold(range)) return;
    range.end = std::min(range.end, engine_->limit().value_or(range.end));
    const bool changed = bool{program_.core.history.record([&](Transaction& change) {
      orvanta::assignRange(change, range, fmt::format("c{}", dice_.upTo(3)), project);
      return ChangeNote{.kind = "assignRange"};
    })};
    engine_->release(changed);
  }

  void turnLast() {
    const auto changes = program_.call("changes.list", R"({"limit": 1})");
    if (changes.as_array().empty()) return;
    const auto& last = changes.at(0);
    program_.call(last.at("undone").as_bool() ? "changes.redo" : "changes.undo",
                  fmt::format(R"({{"id": {}}})", last.at("id").as_int64()));
  }

  test::Program program_;
  test::FakeClock clock_;
  const double begin_;
  LiveState live_{clock_.read()};
  std::unique_ptr<Engine> engine_;
  test::Dice dice_{std::random_device()()};
  int away_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;  // folder; time of the first tick, or "finish"
  finishSwap(DataLocation::under(argv[1]).file());
  if (std::string_view(argv[2]) == "finish") return 0;
  StoreWriter writer(argv[1], std::strtod(argv[2], nullptr));
  for (int step = 0;; ++step) {
    writer.tick();
    if (step % 5 == 4) writer.change();
  }
}
