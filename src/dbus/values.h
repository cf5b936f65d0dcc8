// What is said on a message bus: arguments and answers.
#pragma once

#include <glibmm/variant.h>

#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace orvanta::dbus {

/// The arguments of a call, an answer or a signal.
using Reply = Glib::VariantContainerBase;

/// A value for the bus. A std::string, or what becomes one, is a text; it must be valid UTF-8.
template <class Value>
Glib::VariantBase toValue(const Value& value) {
  if constexpr (std::is_convertible_v<const Value&, std::string_view>) {
    return Glib::Variant<Glib::ustring>::create(std::string(value));
  } else {
    return Glib::Variant<Value>::create(value);
  }
}

/// The value; throws std::bad_cast when it has another type. A text may be asked for as
/// std::string, and is valid UTF-8 as far as the sender kept to the rules.
template <class Value>
Value fromValue(const Glib::VariantBase& value) {
  if constexpr (std::is_same_v<Value, std::string>) {
    return fromValue<Glib::ustring>(value).raw();
  } else {
    return Glib::VariantBase::cast_dynamic<Glib::Variant<Value>>(value).get();
  }
}

/// The arguments of a call.
template <class... Values>
Reply arguments(const Values&... values) {
  return Reply::create_tuple(std::vector<Glib::VariantBase>{toValue(values)...});
}

/// Argument number `index` of an answer or a signal. Throws std::bad_cast or std::out_of_range when
/// there is none of this type.
template <class Value>
Value argument(const Reply& reply, std::size_t index = 0) {
  Glib::VariantBase child;
  reply.get_child(child, index);
  return fromValue<Value>(child);
}

}  // namespace orvanta::dbus
