#include "platform/sources.h"

#include <algorithm>
#include <span>
#include <utility>

namespace orvanta {

FirstForeground::FirstForeground(std::vector<std::unique_ptr<ForegroundProbe>> sources)
    : sources_(std::move(sources)) {}

ForegroundProbe* FirstForeground::first() const {
  ForegroundProbe* doubtful = nullptr;
  for (const auto& source : sources_) {
    if (!source->titlesReadable()) continue;
    if (!source->doubtful()) return source.get();
    if (!doubtful) doubtful = source.get();
  }
  return doubtful;
}

std::optional<FrontmostApp> FirstForeground::frontmostApp() {
  auto* source = first();
  return source ? source->frontmostApp() : std::nullopt;
}

bool FirstForeground::titlesReadable() {
  return first() != nullptr;
}

Source FirstForeground::source() {
  auto* source = first();
  return source ? source->source() : kNoSource;
}

FirstIdle::FirstIdle(std::vector<std::unique_ptr<IdleSource>> sources)
    : sources_(std::move(sources)) {}

double FirstIdle::idleSeconds() {
  const std::lock_guard lock(mutex_);
  for (const auto& source : sources_) {
    if (const auto seconds = source->idleSeconds()) return *seconds;
  }
  return 0;
}

Source FirstIdle::source() {
  const std::lock_guard lock(mutex_);
  for (const auto& source : sources_) {
    if (source->idleSeconds()) return source->source();
  }
  return kNoSource;
}

AnyInhibition::AnyInhibition(std::vector<std::unique_ptr<InhibitionProbe>> sources)
    : sources_(std::move(sources)) {}

bool AnyInhibition::displayKeptAwake() {
  return std::any_of(sources_.begin(), sources_.end(),
                     [](const auto& source) { return source->displayKeptAwake(); });
}

Source AnyInhibition::source() {
  std::vector<Source> answering;
  for (const auto& each : sources_) {
    if (auto source = each->source(); source != kNoSource) answering.push_back(std::move(source));
  }
  return joinSources(answering);
}

Source joinSources(const std::vector<Source>& sources) {
  if (sources.empty()) return kNoSource;
  auto joined = sources.front();
  for (const auto& [id, name] : std::span(sources).subspan(1)) {
    joined.id += "+" + id;
    joined.name += ", " + name;
  }
  return joined;
}

}  // namespace orvanta
