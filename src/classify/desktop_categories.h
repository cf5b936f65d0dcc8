// What an application is used for, by the categories that its desktop file lists.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "storage/category.h"

namespace orvanta {

/// What an application with these categories counts as (their meaning:
/// specifications.freedesktop.org/menu-spec). Absent where they say nothing, and for browsers: what
/// somebody does there, the site tells. A file may list several in any order and what it likes
/// besides; the first of our own order decides.
std::optional<Category> categoryOf(const std::vector<std::string>& desktopCategories);

}  // namespace orvanta
