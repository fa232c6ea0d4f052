#include "control/StatusReport.h"

#include "common/clock.h"

namespace corvan {

void StatusReport::Append(const std::string& message) {
    LocalTime now = NowLocal();
    const std::string line = FormatDate(now) + " - " + FormatTime(now) + " : " + message + "\r\n";
    std::lock_guard<std::mutex> lock(mutex_);
    text_ += line;
}

std::string StatusReport::Text() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return text_;
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
