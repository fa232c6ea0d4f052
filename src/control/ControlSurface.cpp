#include "control/ControlSurface.h"

#include <algorithm>
#include <cmath>

namespace corvan {

namespace {
// A fraction that is no number counts as none, and one far out of range is
// held to 100 times the whole before it is rounded into an int.
int WholePercent(float fraction) {
    if (std::isnan(fraction)) return 0;
    const double bounded = std::clamp(static_cast<double>(fraction), -100.0, 100.0);
    return static_cast<int>(std::floor(bounded * 100.0 + 0.5));
}
}  // namespace

int ControlSurface::ProgressPercent() const { return WholePercent(progress_); }

std::string ControlSurface::StatusCaption() const {
    int percent = ProgressPercent();
    if (percent > 0) return lastMessage_ + "  " + std::to_string(percent) + "%";
    return lastMessage_;
}

void ControlSurface::RedrawProgressBar() { ++progressRedraws_; }

void ControlSurface::DrawTransferLine(const std::string& text, float fraction) {
    if (!text.empty()) transferText_ = text;
    // The bound is 100 although the value is a fraction; pages have always
    // seen it so.
    if (fraction > 100) fraction = 100;
    if (fraction != -1) transferFraction_ = fraction;
    if (transferFraction_ > 100) transferFraction_ = 100;
}

int ControlSurface::TransferPercent() const {
    int percent = WholePercent(transferFraction_);
    return percent == 0 ? 1 : percent;
}

std::string ControlSurface::TransferCaption() const {
    return transferText_ + " - " + std::to_string(TransferPercent()) + "%";
}

}  // namespace corvan
