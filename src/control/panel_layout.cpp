#include "control/panel_layout.h"

#include <algorithm>
#include <cmath>

namespace corvan {

namespace {

constexpr int kTwipsPerInch = 1440;
constexpr int kHimetricPerInch = 2540;

int Scaled(int value, int numerator, int denominator) {
    return static_cast<int>(std::lround(static_cast<double>(value) * numerator / denominator));
}

// The margins of the panel's children. The bars and the transfer text keep
// 240 twips from each side; the status caption leaves 3030 on the right for
// the logo; the version line runs to 60 twips from the right edge.
constexpr int kSideMargin = 240;

TwipsRect Union(const TwipsRect& a, const TwipsRect& b) {
    int left = std::min(a.left, b.left), top = std::min(a.top, b.top);
    return {left, top, std::max(a.Right(), b.Right()) - left, std::max(a.Bottom(), b.Bottom()) - top};
}

}  // namespace

PanelSize FitPanel(int width, int) { return {std::max(width, kPanelMinWidth), kPanelHeight}; }

PanelLayout LayOutPanel(int width) {
    PanelLayout layout;
    layout.width = width;
    layout.height = kPanelHeight;
    layout.lblStatus = {kSideMargin, 165, width - 3270, 285};
    layout.Image1 = {width - 2910, 120, 2670, 375};
    layout.picStatusbar = {kSideMargin, 525, width - 480, 300};
    layout.picFTP = {kSideMargin, 1140, width - 480, 180};
    layout.lblFTP = {kSideMargin, 900, layout.picFTP.width, 225};
    layout.lblVersion = {kSideMargin, 1470, 0, 225};
    layout.lblVersion.width = width - layout.lblVersion.left - 60;
    return layout;
}

TwipsRect PartArea(const PanelLayout& layout, SurfacePart part) {
    switch (part) {
        case SurfacePart::ProgressBar: return Union(layout.lblStatus, layout.picStatusbar);
        case SurfacePart::TransferLine: return Union(layout.lblFTP, layout.picFTP);
        case SurfacePart::VersionLine: return layout.lblVersion;
    }
    return {0, 0, layout.width, layout.height};
}

int TwipsToPixels(int twips, int dpi) { return Scaled(twips, dpi, kTwipsPerInch); }
int PixelsToTwips(int pixels, int dpi) { return Scaled(pixels, kTwipsPerInch, dpi); }
int TwipsToHimetric(int twips) { return Scaled(twips, kHimetricPerInch, kTwipsPerInch); }
int HimetricToTwips(int himetric) { return Scaled(himetric, kTwipsPerInch, kHimetricPerInch); }

int PanelWidthForPixels(int pixels, int dpi) {
    if (pixels <= TwipsToPixels(kPanelMinWidth, dpi)) return kPanelMinWidth;
    return PixelsToTwips(pixels, dpi);
}

int FillWidth(int width, int percent) {
    percent = std::clamp(percent, 0, 100);
    return Scaled(width, percent, 100);
}

std::vector<FramePiece> FramePieces(int width, int height, const FrameSizes& sizes) {
    std::vector<FramePiece> pieces;
    auto size = [&](FrameImage image) { return sizes[static_cast<size_t>(image)]; };
    auto along = [&](FrameImage image, int step, int length, bool horizontal, int fixed) {
        if (step <= 0 || size(image).width <= 0 || size(image).height <= 0) return;
        for (int offset = 0; offset < length; offset += step)
            pieces.push_back(horizontal ? FramePiece{image, offset, fixed} : FramePiece{image, fixed, offset});
    };
    along(FrameImage::Header, size(FrameImage::Header).width, width, true, 0);
    along(FrameImage::Footer, size(FrameImage::Footer).width, width, true, height - size(FrameImage::Footer).height);
    along(FrameImage::Left, size(FrameImage::Left).height, height, false, 0);
    along(FrameImage::Right, size(FrameImage::Right).height, height, false, width - size(FrameImage::Right).width);
    auto corner = [&](FrameImage image, bool right, bool lower) {
        ImageSize s = size(image);
        if (s.width <= 0 || s.height <= 0) return;
        pieces.push_back({image, right ? width - s.width : 0, lower ? height - s.height : 0});
    };
    corner(FrameImage::UpperLeft, false, false);
    corner(FrameImage::UpperRight, true, false);
    corner(FrameImage::LowerLeft, false, true);
    corner(FrameImage::LowerRight, true, true);
    return pieces;
}

}  // namespace corvan
