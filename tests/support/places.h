// Where the build and the sources lie. In a source of its own: no other depends on the folder that
// it is built in.
#pragma once

namespace orvanta::test {

extern const char* const kDataFolder;    ///< the extension, the manifests' templates, the page
extern const char* const kSourceFolder;  ///< of the project

}  // namespace orvanta::test
