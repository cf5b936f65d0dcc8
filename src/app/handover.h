// How the program goes on in a fresh image of itself.
#pragma once

#include <cstdint>
#include <optional>

namespace orvanta {

/// What an image of the program leaves to the one that the kernel puts in its place, in the same
/// process: what the user said and the store does not tell, and the right to the data.
struct Handover {
  int lock = -1;                   ///< file of the data lock, held all the while; -1: none
  bool paused = false;             ///< the tracking
  std::optional<int64_t> project;  ///< that the user says to be working on
  double projectSince = 0;         ///< when that was said, Unix seconds
};

/// What the image before this one left; absent when the process began with this one. Once, before
/// there are threads: it takes the words out of the environment, where they came.
std::optional<Handover> takeHandover();

/// Puts a fresh image of this program, started without arguments, in the place of this one. Returns
/// only when that fails. Nothing may be left to write.
void handOver(const Handover& left);

}  // namespace orvanta
