// What the page keeps of its user's choices: in the store, so that it goes wherever that goes.
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "bridge/routes/routes.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr auto kMarks = "page_marks";
constexpr std::size_t kLongestKey = 40;
constexpr std::size_t kMost = 100'000;  // bytes, of all marks

json::object marksIn(Core& core) {
  const auto text = core.db.setting(kMarks);
  if (text.size() > kMost) return {};
  boost::system::error_code broken;
  auto marks = json::parse(text, broken);
  return !broken && marks.is_object() ? std::move(marks.get_object()) : json::object();
}

json::value marks(Core& core, const Body& /*body*/) {
  return marksIn(core);
}

json::value mark(Core& core, const Body& body) {
  const auto key = body.s("key");
  if (!key || key->size() > kLongestKey) throw AppError("clé invalide");
  auto marks = marksIn(core);
  const auto* value = body.find("value");
  if (value && !value->is_null()) {
    marks[*key] = *value;
  } else {
    marks.erase(*key);
  }
  const auto text = json::serialize(marks);
  if (text.size() > kMost) throw AppError("la page retient trop de choses");
  return told(core, core.db.setSetting(kMarks, text));
}

constexpr Route kRoutes[]{
    {"page.marks", RouteKind::Read, marks},
    {"page.mark", RouteKind::Write, mark, "key, value"},
};

}  // namespace

RouteTable pageRoutes() {
  return kRoutes;
}

}  // namespace orvanta
