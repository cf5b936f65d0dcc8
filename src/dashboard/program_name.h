// What the rest of the desktop knows the dashboard's program by.
#pragma once

namespace orvanta {

/// To be called once GTK is initialised and before the first window is made.
void nameProgram();

}  // namespace orvanta
