// The control's panel as a page and a container see it: drawn through
// IViewObject::Draw into a memory bitmap and read pixel by pixel, its size
// rules in a container, its window repainted as a session runs, and the
// hourglass of a session.
#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "container_site.h"
#include "control/PanelPainter.h"
#include "control/panel_layout.h"
#include "picture.h"
#include "probe_server.h"

using namespace control_tests;
using corvan::HimetricToTwips;
using corvan::TwipsToHimetric;

namespace {

constexpr COLORREF kBlue = RGB(0, 90, 168), kWhite = RGB(255, 255, 255);

RECT Pixels(const corvan::TwipsRect& r) {
    int x = corvan::ScreenDpiX(), y = corvan::ScreenDpiY();
    return {corvan::TwipsToPixels(r.left, x), corvan::TwipsToPixels(r.top, y), corvan::TwipsToPixels(r.Right(), x),
            corvan::TwipsToPixels(r.Bottom(), y)};
}

// A bar read along one row: its inside (the blue and white pixels within its
// border), the blue run at the start of it, and whether only white follows.
struct BarRow {
    int inside = 0, filled = 0;
    bool whiteAfter = true;
};

BarRow ReadBar(const Picture& picture, const RECT& bar, int y) {
    auto plain = [&](int x) { return picture.At(x, y) == kBlue || picture.At(x, y) == kWhite; };
    int left = bar.left, right = bar.right;
    while (left < right && !plain(left)) ++left;
    while (right > left && !plain(right - 1)) --right;
    BarRow row;
    row.inside = right - left;
    int x = left;
    while (x < right && picture.At(x, y) == kBlue) ++x;
    row.filled = x - left;
    for (; x < right; ++x) row.whiteAfter = row.whiteAfter && picture.At(x, y) == kWhite;
    return row;
}

// The fill of a bar in percent of its inside, checked on its middle row and
// found the same on every other row inside its border.
void ExpectFill(const Picture& picture, const RECT& bar, int percent, const char* what) {
    int middle = (bar.top + bar.bottom) / 2;
    BarRow row = ReadBar(picture, bar, middle);
    ASSERT_GT(row.inside, 100) << what;
    EXPECT_NEAR(row.filled, row.inside * percent / 100.0, 1.0) << what << " filled " << row.filled << " of " << row.inside;
    EXPECT_TRUE(row.whiteAfter) << what;
    for (int y = bar.top + 1; y < bar.bottom - 1; ++y) EXPECT_EQ(ReadBar(picture, bar, y).filled, row.filled) << what << " row " << y;
}

class Panel : public Page {
protected:
    // One session whose engine plays `script`: the panel keeps what it drew.
    void Session(const std::string& script) {
        SetScript(script.c_str());
        Run(Long(1));
    }

    Picture Render() {
        auto view = control.As<IViewObject2>(IID_IViewObject2);
        SIZEL extent = {};
        view->GetExtent(DVASPECT_CONTENT, -1, nullptr, &extent);
        SIZE size = corvan::PanelPixels(HimetricToTwips(extent.cx));
        return Capture(size.cx, size.cy, [&](HDC dc) {
            RECTL bounds = {0, 0, size.cx, size.cy};
            EXPECT_EQ(view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, dc, &bounds, nullptr, nullptr, 0),
                      S_OK);
        });
    }

    Picture After(const std::string& script) {
        Session(script);
        return Render();
    }

    corvan::PanelLayout layout = corvan::LayOutPanel(corvan::kPanelMinWidth);
};

TEST_F(Panel, BarsFillAsTheRulesSayWithoutAWindow) {
    const struct {
        const char* picture;
        const char* script;
        int overall, transfer;
    } cases[] = {
        {"panel-0", "StatusMsgChange|Preparing the installation...\nFTPStatus|0|SC_Install.scl\n", 1, 1},
        {"panel-50", "StatusMsgChange|Installing CorvanClient.msi\nProgressUpdate|0.5\nFTPStatus|0.5|CorvanClient.msi\n",
         50, 50},
        {"panel-100", "StatusMsgChange|The installation is complete.\nProgressUpdate|1\nFTPStatus|1|Reports.mdb\n", 99,
         100},
    };
    for (const auto& c : cases) {
        Picture picture = After(c.script);
        picture.Save(c.picture);
        ExpectFill(picture, Pixels(layout.picStatusbar), c.overall, c.picture);
        ExpectFill(picture, Pixels(layout.picFTP), c.transfer, c.picture);
    }
}

TEST_F(Panel, CaptionsShowMessagePercentAndTransferTextAsTheRulesSay) {
    RECT status = Pixels(layout.lblStatus), transfer = Pixels(layout.lblFTP), transferBar = Pixels(layout.picFTP);
    // At 0.5 the caption is the message, two blanks and "50%": the same
    // pixels as a message spelling that out at progress 0, where no
    // percentage is added; one blank less shows.
    Picture half = After("StatusMsgChange|Installing setup.msi\nProgressUpdate|0.5\nFTPStatus|0.5|setup.msi\n");
    Picture spelled = After("StatusMsgChange|Installing setup.msi  50%\nFTPStatus|0.504|setup.msi\n");
    Picture oneBlank = After("StatusMsgChange|Installing setup.msi 50%\nFTPStatus|0.51|setup.msi\n");
    EXPECT_TRUE(half.SameIn(spelled, status));
    EXPECT_FALSE(half.SameIn(oneBlank, status));
    EXPECT_TRUE(half.SameIn(spelled, transfer));
    EXPECT_FALSE(half.SameIn(oneBlank, transfer));

    // A transfer at 0 shows 1%, as at 0.01 and unlike 0.02.
    Picture zero = After("FTPStatus|0|setup.msi\n");
    EXPECT_TRUE(zero.SameIn(After("FTPStatus|0.01|setup.msi\n"), transfer));
    EXPECT_FALSE(zero.SameIn(After("FTPStatus|0.02|setup.msi\n"), transfer));

    // (-1, "") keeps the text and the percentage.
    Picture kept = After("FTPStatus|0.5|setup.msi\nFTPStatus|-1|\n");
    EXPECT_TRUE(kept.SameIn(half, transfer));
    EXPECT_TRUE(kept.SameIn(half, transferBar));

    // An uninstall hides the transfer line.
    Session("");
    SetScript("");
    Run(Long(3));
    Picture hidden = Render();
    for (int x = transferBar.left; x < transferBar.right; ++x) ASSERT_EQ(hidden.At(x, transferBar.top + 2), kWhite);
}

TEST_F(Panel, SizeRulesHoldInAContainer) {
    ActivePage page(control.Get());
    ASSERT_TRUE(IsWindow(page.window));
    SIZEL proposed = {TwipsToHimetric(5000), TwipsToHimetric(3000)};
    ASSERT_EQ(page.ole->SetExtent(DVASPECT_CONTENT, &proposed), S_OK);
    SIZEL kept = {};
    ASSERT_EQ(page.ole->GetExtent(DVASPECT_CONTENT, &kept), S_OK);
    EXPECT_EQ(HimetricToTwips(kept.cx), 8000);
    EXPECT_EQ(HimetricToTwips(kept.cy), 1905);
    SIZE panel = corvan::PanelPixels(8000);
    RECT client;
    GetClientRect(page.window, &client);
    EXPECT_EQ(client.right, panel.cx);
    EXPECT_EQ(client.bottom, panel.cy);
    EXPECT_EQ(page.site.lastPosition.right - page.site.lastPosition.left, panel.cx);

    // A container placing it in a box of another shape is told where it went.
    RECT square = {10, 20, 310, 320};
    int told = page.site.positionChanges;
    ASSERT_EQ(control.As<IOleInPlaceObject>(IID_IOleInPlaceObject)->SetObjectRects(&square, &square), S_OK);
    GetClientRect(page.window, &client);
    EXPECT_EQ(client.right, panel.cx);
    EXPECT_EQ(client.bottom, panel.cy);
    EXPECT_EQ(page.site.positionChanges, told + 1);
}

// The control window's paints: each one's update area, as it arrives.
std::vector<RECT> paints;
WNDPROC controlProcedure = nullptr;

LRESULT CALLBACK CountPaints(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_PAINT) {
        RECT update = {};
        GetUpdateRect(window, &update, FALSE);
        paints.push_back(update);
    }
    return CallWindowProcA(controlProcedure, window, message, wParam, lParam);
}

struct ViewSink : IAdviseSink {
    int viewChanges = 0;
    STDMETHODIMP QueryInterface(REFIID riid, void** out) override {
        *out = IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IAdviseSink) ? this : nullptr;
        return *out ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP_(void) OnDataChange(FORMATETC*, STGMEDIUM*) override {}
    STDMETHODIMP_(void) OnViewChange(DWORD, LONG) override { ++viewChanges; }
    STDMETHODIMP_(void) OnRename(IMoniker*) override {}
    STDMETHODIMP_(void) OnSave() override {}
    STDMETHODIMP_(void) OnClose() override {}
};

TEST_F(Panel, EveryStateChangeReachesTheScreenWhileTheSessionRuns) {
    ViewSink sink;
    auto view = control.As<IViewObject2>(IID_IViewObject2);
    ASSERT_EQ(view->SetAdvise(DVASPECT_CONTENT, 0, &sink), S_OK);
    ActivePage page(control.Get());
    controlProcedure = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(page.window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CountPaints)));
    paints.clear();
    // The engine keeps the thread busy. The transfer line lets messages run;
    // the progress after it is painted by the panel itself or not at all
    // before the session ends.
    Session("FTPStatus|0.3|data.cab\nProgressUpdate|0.4\n");
    RECT status = Pixels(layout.lblStatus), transfer = Pixels(layout.lblFTP), seen;
    auto covers = [&](const RECT& area) {
        for (const RECT& paint : paints)
            if (IntersectRect(&seen, &paint, &area) && EqualRect(&seen, &area)) return true;
        return false;
    };
    EXPECT_TRUE(covers(status)) << paints.size() << " paints";
    EXPECT_TRUE(covers(transfer)) << paints.size() << " paints";
    EXPECT_GE(sink.viewChanges, 3);
    SetWindowLongPtrA(page.window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(controlProcedure));
    view->SetAdvise(DVASPECT_CONTENT, 0, nullptr);
}

// The pointer as a mouse move over the control leaves it.
HWND pointedAt = nullptr;
HCURSOR pointerSeen = nullptr;

void MoveMouseOver(HWND window) {
    RECT area;
    GetWindowRect(window, &area);
    SetCursorPos((area.left + area.right) / 2, (area.top + area.bottom) / 2);
}

void CALLBACK PointDuringSession(HWND, UINT, UINT_PTR timer, DWORD) {
    static int ticks = 0;
    if (++ticks == 1) {
        MoveMouseOver(pointedAt);
    } else {
        pointerSeen = GetCursor();
        KillTimer(nullptr, timer);
        ticks = 0;
    }
}

void Pump(int milliseconds) {
    for (DWORD end = GetTickCount() + milliseconds; static_cast<int>(end - GetTickCount()) > 0;) {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    }
}

TEST_F(Panel, TheHourglassHoldsOverTheControlForTheWholeSession) {
    ActivePage page(control.Get());
    SetWindowPos(page.page, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    HCURSOR wait = LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_WAIT));
    HCURSOR arrow = LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_ARROW));
    pointedAt = page.window;
    pointerSeen = nullptr;
    MoveMouseOver(page.page);
    Pump(50);
    SetTimer(nullptr, 0, 150, &PointDuringSession);
    Session("pump|600\n");
    EXPECT_EQ(pointerSeen, wait);
    // After the session the arrow comes back with the next move.
    MoveMouseOver(page.page);
    Pump(50);
    MoveMouseOver(page.window);
    Pump(100);
    EXPECT_EQ(GetCursor(), arrow);
}

}  // namespace
