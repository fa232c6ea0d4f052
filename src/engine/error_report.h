#pragma once
#include <string>
#include <string_view>

#include "common/failure.h"

namespace corvan {

// The text the engine reports through InstallerError for a failure its
// procedure trapped: number, source and description joined with " - ", then
// the procedure's context text, which carries its own leading " - ".
std::string ErrorReportText(const Failure& failure, std::string_view context);

}  // namespace corvan
