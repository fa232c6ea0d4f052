#include "control/StatusReport.h"

#include "common/clock.h"
#include "control/frmStatus.h"

namespace corvan {

void StatusReport::Append(const std::string& message) {
    LocalTime now = NowLocal();
    frmStatus::Instance().Status(FormatDate(now) + " - " + FormatTime(now) + " : " + message + "\r\n");
}

const std::string& StatusReport::Text() const { return frmStatus::Instance().Text(); }

void StatusReport::Display(bool show, HWND owner) { frmStatus::Instance().Display(show, owner); }

StatusReport& ProcessStatusReport() {
    static StatusReport report;
    return report;
}

}  // namespace corvan
