#include "dashboard/program_name.h"

#include <gtk/gtk.h>
#ifdef GDK_WINDOWING_X11
#include <gdk/x11/gdkx.h>
#endif

#include "base/application_id.h"

namespace orvanta {

// Screen readers call the program by the first of these. Desktops match its windows with the
// desktop file by the application's id; those that know of none, by the class.
void nameProgram() {
  g_set_prgname("Orvanta");
  g_set_application_name("Orvanta");
#ifdef GDK_WINDOWING_X11
  if (auto* const display = gdk_display_get_default(); GDK_IS_X11_DISPLAY(display)) {
    gdk_x11_display_set_program_class(display, kApplicationId);
  }
#endif
}

}  // namespace orvanta
