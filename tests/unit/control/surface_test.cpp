// The panel's state, captions, size rules and layout arithmetic.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "control/ControlSurface.h"
#include "control/panel_layout.h"
#include "scripted_desktop.h"

using namespace corvan;

namespace {

struct RecordingView : SurfaceView {
    std::vector<std::pair<SurfacePart, bool>> changes;
    void SurfaceChanged(SurfacePart part, bool refresh) override { changes.emplace_back(part, refresh); }
};

class Surface : public ::testing::Test {
protected:
    void SetUp() override { surface.View(&view); }
    testing_support::ScriptedDesktop desktop;
    RecordingView view;
    ControlSurface surface{desktop};
};

TEST_F(Surface, OverallBarCaptionShowsTheTruePercentTheFillNeverLooksEmptyOrFull) {
    const struct {
        float fraction;
        int percent, fill;
        const char* caption;
    } cases[] = {
        {0.0f, 0, 1, "Installing"},          {0.004f, 0, 1, "Installing"},      {0.01f, 1, 1, "Installing  1%"},
        {0.5f, 50, 50, "Installing  50%"},   {0.994f, 99, 99, "Installing  99%"}, {0.996f, 100, 99, "Installing  100%"},
        {1.0f, 100, 99, "Installing  100%"},
    };
    surface.LastMessage("Installing");
    for (const auto& c : cases) {
        surface.ProgressFraction(c.fraction);
        EXPECT_EQ(surface.ProgressPercent(), c.percent) << c.fraction;
        EXPECT_EQ(surface.ProgressFillPercent(), c.fill) << c.fraction;
        EXPECT_EQ(surface.StatusCaption(), c.caption) << c.fraction;
    }
    surface.RedrawProgressBar();
    ASSERT_EQ(view.changes.size(), 1u);
    EXPECT_EQ(view.changes[0], std::make_pair(SurfacePart::ProgressBar, true));
}

TEST_F(Surface, TransferLineKeepsWhatACallLeavesOutAndLetsMessagesRunEachTime) {
    const struct {
        const char* text;
        float fraction;
        const char* caption;
    } steps[] = {
        {"", -1, " - 1%"},                        // the layout's call before any download
        {"setup.msi", 0, "setup.msi - 1%"},       // 0 shows as 1
        {"", 0.5f, "setup.msi - 50%"},
        {"", -1, "setup.msi - 50%"},              // only redraws
        {"data.cab", 0.256f, "data.cab - 26%"},
        {"big.cab", 250, "big.cab - 10000%"},     // bound at 100, not at 1
    };
    int calls = 0;
    for (const auto& step : steps) {
        surface.DrawTransferLine(step.text, step.fraction);
        ++calls;
        EXPECT_EQ(surface.TransferCaption(), step.caption) << step.text << " " << step.fraction;
        EXPECT_EQ(desktop.pumps, calls);
        EXPECT_EQ(view.changes.back(), std::make_pair(SurfacePart::TransferLine, true));
    }
    EXPECT_FLOAT_EQ(surface.TransferFraction(), 100.0f);

    surface.TransferLineVisible(false);
    surface.TransferLineVisible(false);
    EXPECT_EQ(view.changes.size(), std::size(steps) + 1);
    EXPECT_EQ(view.changes.back(), std::make_pair(SurfacePart::TransferLine, false));
}

// A fraction that is no number, or far out of range, is a bounded percentage.
TEST_F(Surface, PercentagesOfFractionsOutOfRangeAreBounded) {
    const struct {
        float fraction;
        int progress, transfer;
    } cases[] = {{std::numeric_limits<float>::quiet_NaN(), 0, 1}, {1e30f, 10000, 10000}, {-1e30f, -10000, -10000}};
    for (const auto& c : cases) {
        surface.ProgressFraction(c.fraction);
        surface.DrawTransferLine("setup.msi", c.fraction);
        EXPECT_EQ(surface.ProgressPercent(), c.progress) << c.fraction;
        EXPECT_EQ(surface.TransferPercent(), c.transfer) << c.fraction;
    }
}

TEST(VersionLine, NamesTheInstallerAndTheSystem) {
    EXPECT_EQ(VersionLine(1, 4, 27, "Windows XP", "5.1", "Service Pack 2", "2600"),
              "Installer Version: 1.4.27 - OS: Windows XP v5.1 Service Pack 2 (Build: 2600) ");
}

TEST(PanelLayout, SizeRulesAndChildWidths) {
    const struct {
        int width, height, fittedWidth;
    } sizes[] = {{5000, 3000, 8000}, {8000, 1905, 8000}, {12000, 100, 12000}};
    for (const auto& s : sizes) {
        PanelSize fitted = FitPanel(s.width, s.height);
        EXPECT_EQ(fitted.width, s.fittedWidth) << s.width;
        EXPECT_EQ(fitted.height, 1905) << s.width;
    }
    PanelLayout layout = LayOutPanel(9000);
    EXPECT_EQ(layout.picStatusbar.width, 9000 - 480);
    EXPECT_EQ(layout.picFTP.width, 9000 - 480);
    EXPECT_EQ(layout.lblFTP.width, layout.picFTP.width);
    EXPECT_EQ(layout.lblStatus.width, 9000 - 3270);
    EXPECT_EQ(layout.lblVersion.width, 9000 - layout.lblVersion.left - 60);
    for (const TwipsRect& child : {layout.lblStatus, layout.Image1, layout.picStatusbar, layout.lblFTP, layout.picFTP,
                                   layout.lblVersion}) {
        EXPECT_GE(child.left, 60);
        EXPECT_LE(child.Right(), 9000 - 60);
        EXPECT_GE(child.top, 60);
        EXPECT_LE(child.Bottom(), 1905 - 60);
    }
    TwipsRect bar = PartArea(layout, SurfacePart::ProgressBar);
    EXPECT_LE(bar.top, layout.lblStatus.top);
    EXPECT_GE(bar.Bottom(), layout.picStatusbar.Bottom());
}

TEST(PanelLayout, UnitsRoundTripAtTheRulesSizes) {
    EXPECT_EQ(HimetricToTwips(TwipsToHimetric(8000)), 8000);
    EXPECT_EQ(HimetricToTwips(TwipsToHimetric(1905)), 1905);
    EXPECT_EQ(TwipsToPixels(8000, 96), 533);
    EXPECT_EQ(TwipsToPixels(1905, 96), 127);
    EXPECT_EQ(TwipsToPixels(1905, 120), 159);
    const struct {
        int pixels, twips;
    } widths[] = {{100, 8000}, {533, 8000}, {534, 8010}, {600, 9000}};
    for (const auto& w : widths) EXPECT_EQ(PanelWidthForPixels(w.pixels, 96), w.twips) << w.pixels;
}

TEST(PanelLayout, FillIsAProportionalShareInsideTheBar) {
    const struct {
        int width, percent, filled;
    } cases[] = {{531, 1, 5}, {531, 50, 266}, {531, 99, 526}, {531, 100, 531}, {100, 150, 100}, {100, -3, 0}};
    for (const auto& c : cases) EXPECT_EQ(FillWidth(c.width, c.percent), c.filled) << c.width << " " << c.percent;
}

TEST(PanelLayout, FrameTilesEdgesEdgeToEdgeThenPlacesCorners) {
    FrameSizes sizes;
    sizes[static_cast<size_t>(FrameImage::Header)] = {16, 4};
    sizes[static_cast<size_t>(FrameImage::Footer)] = {16, 4};
    sizes[static_cast<size_t>(FrameImage::Left)] = {4, 16};
    sizes[static_cast<size_t>(FrameImage::Right)] = {4, 16};
    sizes[static_cast<size_t>(FrameImage::UpperLeft)] = {8, 8};
    sizes[static_cast<size_t>(FrameImage::UpperRight)] = {8, 8};
    sizes[static_cast<size_t>(FrameImage::LowerRight)] = {6, 10};  // LowerLeft missing: left out
    std::vector<std::tuple<FrameImage, int, int>> pieces;
    for (const FramePiece& p : FramePieces(40, 20, sizes)) pieces.emplace_back(p.image, p.x, p.y);
    using F = FrameImage;
    EXPECT_EQ(pieces, (std::vector<std::tuple<FrameImage, int, int>>{
                          {F::Header, 0, 0}, {F::Header, 16, 0}, {F::Header, 32, 0},
                          {F::Footer, 0, 16}, {F::Footer, 16, 16}, {F::Footer, 32, 16},
                          {F::Left, 0, 0}, {F::Left, 0, 16}, {F::Right, 36, 0}, {F::Right, 36, 16},
                          {F::UpperLeft, 0, 0}, {F::UpperRight, 32, 0}, {F::LowerRight, 34, 10}}));
}

}  // namespace
