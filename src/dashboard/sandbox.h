// Whether this machine lets the web engine lock its processes in.
#pragma once

namespace orvanta {

/// Tries what the sandbox of the web engine needs, a user namespace. Where that is forbidden, tells
/// the engine to do without, and logs it: otherwise it would not start. Call before anything else.
void prepareSandbox();

}  // namespace orvanta
