#include "control/ControlSurface.h"

#include <cmath>

namespace corvan {

namespace {
int WholePercent(float fraction) { return static_cast<int>(std::floor(fraction * 100.0 + 0.5)); }
}  // namespace

int ControlSurface::ProgressPercent() const { return WholePercent(progress_); }

int ControlSurface::ProgressFillPercent() const {
    int percent = ProgressPercent();
    if (percent == 0) return 1;
    if (percent == 100) return 99;
    return percent;
}

std::string ControlSurface::StatusCaption() const {
    int percent = ProgressPercent();
    if (percent > 0) return lastMessage_ + "  " + std::to_string(percent) + "%";
    return lastMessage_;
}

void ControlSurface::RedrawProgressBar() { Changed(SurfacePart::ProgressBar, true); }

void ControlSurface::DrawTransferLine(const std::string& text, float fraction) {
    if (!text.empty()) transferText_ = text;
    // The bound is 100 although the value is a fraction; pages have always
    // seen it so.
    if (fraction > 100) fraction = 100;
    if (fraction != -1) transferFraction_ = fraction;
    if (transferFraction_ > 100) transferFraction_ = 100;
    Changed(SurfacePart::TransferLine, true);
    // A long download calls this after every block: the page stays live.
    desktop_.DoEvents();
}

int ControlSurface::TransferPercent() const {
    int percent = WholePercent(transferFraction_);
    return percent == 0 ? 1 : percent;
}

std::string ControlSurface::TransferCaption() const {
    return transferText_ + " - " + std::to_string(TransferPercent()) + "%";
}

void ControlSurface::TransferLineVisible(bool visible) {
    if (visible == transferVisible_) return;
    transferVisible_ = visible;
    Changed(SurfacePart::TransferLine, false);
}

void ControlSurface::VersionCaption(std::string caption) {
    versionCaption_ = std::move(caption);
    Changed(SurfacePart::VersionLine, false);
}

void ControlSurface::Changed(SurfacePart part, bool refresh) {
    if (view_) view_->SurfaceChanged(part, refresh);
}

std::string VersionLine(int major, int minor, int revision, const std::string& osName, const std::string& osVersion,
                        const std::string& servicePack, const std::string& build) {
    return "Installer Version: " + std::to_string(major) + "." + std::to_string(minor) + "." +
           std::to_string(revision) + " - OS: " + osName + " v" + osVersion + " " + servicePack +
           " (Build: " + build + ") ";
}

}  // namespace corvan
