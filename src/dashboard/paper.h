// The page on paper, or as a PDF.
#pragma once

#include <webkit/webkit.h>

namespace orvanta {

/// Prints with the desktop's dialogue what `view` shows. The paper is A4, lies
/// as the page's own sheet of paper does and a file is named after that; at first a PDF is
/// suggested, then the printer that was taken the last time. Tells the user when it goes wrong.
/// The page is asked how; returns before that. Main thread.
void printPage(WebKitWebView* view);

}  // namespace orvanta
