#include "support/places.h"

namespace orvanta::test {

const char* const kDataFolder = ORVANTA_DATA;
const char* const kSourceFolder = ORVANTA_SOURCE;

}  // namespace orvanta::test
