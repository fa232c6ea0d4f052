#include "control/StatusReport.h"

#include "common/clock.h"

namespace corvan {

void StatusReport::Append(const std::string& message) {
    LocalTime now = NowLocal();
    text_ += FormatDate(now) + " - " + FormatTime(now) + " : " + message + "\r\n";
}

void StatusReport::Display(bool show, HWND owner) {
    shown_ = show;
    owner_ = owner;
}

StatusReport& ProcessStatusReport() {
    static StatusReport report;
    return report;
}

}  // namespace corvan
