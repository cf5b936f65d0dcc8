// An object of GLib's in C with one owner.
#pragma once

#include <glib-object.h>

#include <memory>

namespace orvanta {

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};

/// Gives its reference back.
template <class Object>
using Ref = std::unique_ptr<Object, Unref>;

}  // namespace orvanta
