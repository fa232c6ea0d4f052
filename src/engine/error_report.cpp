#include "engine/error_report.h"

namespace corvan {

std::string ErrorReportText(const Failure& failure, std::string_view context) {
    return std::to_string(failure.Number()) + " - " + failure.Source() + " - " + failure.Description() +
           std::string(context);
}

}  // namespace corvan
