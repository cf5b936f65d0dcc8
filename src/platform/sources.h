// Several sources of one answer, put together as one probe. Services come and go, so the choice is
// made anew at every question. All operations may be called from any thread.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/probes.h"

namespace orvanta {

/// The first source that can read titles now, before those that are doubtful.
class FirstForeground : public ForegroundProbe {
 public:
  explicit FirstForeground(std::vector<std::unique_ptr<ForegroundProbe>> sources);

  std::optional<FrontmostApp> frontmostApp() override;
  bool titlesReadable() override;
  Source source() override;

 private:
  ForegroundProbe* first() const;

  std::vector<std::unique_ptr<ForegroundProbe>> sources_;
};

/// The first source that can tell the idle time now; 0 when none can.
class FirstIdle : public IdleProbe {
 public:
  explicit FirstIdle(std::vector<std::unique_ptr<IdleSource>> sources);

  double idleSeconds() override;
  Source source() override;

 private:
  std::mutex mutex_;  // the sources are asked by one thread at a time
  std::vector<std::unique_ptr<IdleSource>> sources_;
};

/// Whether any source says so; asked in order until one does.
class AnyInhibition : public InhibitionProbe {
 public:
  explicit AnyInhibition(std::vector<std::unique_ptr<InhibitionProbe>> sources);

  bool displayKeptAwake() override;
  Source source() override;

 private:
  std::vector<std::unique_ptr<InhibitionProbe>> sources_;
};

/// Several sources as one; kNoSource when there are none.
Source joinSources(const std::vector<Source>& sources);

}  // namespace orvanta
