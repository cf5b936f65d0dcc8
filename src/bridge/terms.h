// What is agreed for a project, as the dashboard sends and receives it.
#pragma once

#include <boost/json/object.hpp>
#include <optional>

#include "bridge/body.h"
#include "reports/sheet.h"
#include "storage/project_terms.h"

namespace orvanta {

/// Those under "terms", where what is missing is not agreed; absent without that key, the usual
/// ones for null. Throws AppError, in French, for what nobody can mean.
std::optional<ProjectTerms> termsIn(const Body& body);

boost::json::object termsJson(const ProjectTerms& terms);
boost::json::object hoursJson(const ProjectHours& hours, const ProjectTerms& terms);

}  // namespace orvanta
