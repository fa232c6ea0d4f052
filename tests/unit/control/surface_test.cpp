// The panel's state and captions (control.txt).
#include <vector>

#include "../harness.h"
#include "control/ControlSurface.h"
#include "scripted_desktop.h"

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
    surface.LastMessage("Installing");
    for (const auto& c : Table("control/control.txt", "overall")) {
        surface.ProgressFraction(std::stof(c[0]));
        EXPECT_EQ(surface.ProgressPercent(), std::stoi(c[1])) << c.where;
        EXPECT_EQ(surface.ProgressFillPercent(), std::stoi(c[2])) << c.where;
        EXPECT_EQ(surface.StatusCaption(), c[3]) << c.where;
    }
    surface.RedrawProgressBar();
    ASSERT_EQ(view.changes.size(), 1u);
    EXPECT_EQ(view.changes[0], std::make_pair(SurfacePart::ProgressBar, true));
}

TEST_F(Surface, TransferLineKeepsWhatACallLeavesOutAndLetsMessagesRunEachTime) {
    const auto steps = Table("control/control.txt", "transfer");
    int calls = 0;
    for (const auto& step : steps) {
        surface.DrawTransferLine(step[0], std::stof(step[1]));
        ++calls;
        EXPECT_EQ(surface.TransferCaption(), step[2]) << step.where;
        EXPECT_EQ(desktop.pumps, calls);
        EXPECT_EQ(view.changes.back(), std::make_pair(SurfacePart::TransferLine, true));
    }
    EXPECT_FLOAT_EQ(surface.TransferFraction(), 100.0f);

    surface.TransferLineVisible(false);
    surface.TransferLineVisible(false);
    EXPECT_EQ(view.changes.size(), steps.size() + 1);
    EXPECT_EQ(view.changes.back(), std::make_pair(SurfacePart::TransferLine, false));
}

TEST(VersionLine, NamesTheInstallerAndTheSystem) {
    EXPECT_EQ(VersionLine(1, 4, 27, "Windows XP", "5.1", "Service Pack 2", "2600"),
              "Installer Version: 1.4.27 - OS: Windows XP v5.1 Service Pack 2 (Build: 2600) ");
}

}  // namespace
