// The panel's state and captions.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "control/ControlSurface.h"
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

}  // namespace
