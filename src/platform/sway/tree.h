// Which windows keep the display awake under sway.
#pragma once

#include <string>
#include <string_view>

#include "platform/probes.h"

namespace orvanta::sway {

/// Asks for sway's tree of windows over its socket (sway-ipc(7), GET_TREE): a window that plays a
/// film is marked there, and nowhere else. Waits at most 50 ms; a sway that does not answer counts
/// by its last answer. Asked from one thread.
class Tree : public InhibitionProbe {
 public:
  /// `socket` is a path, "" for `$SWAYSOCK`.
  explicit Tree(std::string socket = {});

  bool displayKeptAwake() override;
  Source source() override;

 private:
  const std::string socket_;
  bool answer_ = false;
};

/// Whether a window of this tree (JSON) holds the display awake. False for anything else.
bool holdsDisplayAwake(std::string_view tree);

}  // namespace orvanta::sway
