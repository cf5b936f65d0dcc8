// Moves KWin's pointer by one pixel, as an input device would (org_kde_kwin_fake_input).
#include <fake-input.h>
#include <wayland-client.h>

#include <cstring>

int main() {
  auto* display = wl_display_connect(nullptr);
  if (!display) return 1;
  org_kde_kwin_fake_input* input = nullptr;
  const wl_registry_listener listener{
      .global =
          [](void* found, wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
            if (std::strcmp(interface, org_kde_kwin_fake_input_interface.name) != 0) return;
            *static_cast<org_kde_kwin_fake_input**>(found) = static_cast<org_kde_kwin_fake_input*>(
                wl_registry_bind(registry, name, &org_kde_kwin_fake_input_interface, 1));
          },
      .global_remove = [](void*, wl_registry*, uint32_t) {}};
  wl_registry_add_listener(wl_display_get_registry(display), &listener, &input);
  wl_display_roundtrip(display);
  if (!input) return 2;
  org_kde_kwin_fake_input_authenticate(input, "orvanta", "test");
  org_kde_kwin_fake_input_pointer_motion(input, wl_fixed_from_int(1), 0);
  wl_display_roundtrip(display);
  return 0;
}
