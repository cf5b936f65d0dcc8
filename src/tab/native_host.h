// The side of the browser: what the browser starts for our extension.
#pragma once

namespace orvanta {

/// Takes the extension's reports from standard input and serves the last one to whoever asks, on a
/// socket of this process; see browser/tab_socket.h. Returns the exit status, 0 when the browser
/// closed the input or asked us to end.
int runNativeHost();

}  // namespace orvanta
