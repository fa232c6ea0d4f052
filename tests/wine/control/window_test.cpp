// What the control shows on a real desktop: its window in a container, its
// panel drawn through IViewObject::Draw and read pixel by pixel against the
// layout, and the status report window with the clipboard.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "control/PanelPainter.h"
#include "control/panel_layout.h"
#include "probe_server.h"

using namespace control_tests;

namespace {

using corvan::HimetricToTwips;

HWND WindowOf(IDispatch* control) {
    VARIANT handle = Call(control, L"hwnd", DISPATCH_PROPERTYGET);
    EXPECT_EQ(V_VT(&handle), VT_I4);
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(V_I4(&handle)));
}

// What a device context shows, read back pixel by pixel.
struct Picture {
    int width = 0;
    std::vector<uint32_t> pixels;  // 0xXXRRGGBB, top row first

    COLORREF At(int x, int y) const {
        const uint32_t p = pixels[static_cast<size_t>(y) * width + x];
        return RGB((p >> 16) & 0xFF, (p >> 8) & 0xFF, p & 0xFF);
    }
};

// Lets `draw` paint into a white width x height memory bitmap and reads it;
// kept as <name>.bmp in the Windows build's pictures folder, for people to look at.
Picture Capture(const std::string& name, int width, int height, const std::function<void(HDC)>& draw) {
    BITMAPINFO format = {{sizeof format.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0}, {}};
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
    HDC dc = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(dc, bitmap);
    RECT all = {0, 0, width, height};
    FillRect(dc, &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    draw(dc);
    GdiFlush();
    const auto* first = static_cast<const uint32_t*>(bits);
    Picture picture{width, std::vector<uint32_t>(first, first + static_cast<size_t>(width) * height)};
    const DWORD header = sizeof(BITMAPFILEHEADER) + sizeof format.bmiHeader, bytes = width * height * 4;
    const BITMAPFILEHEADER file = {0x4D42, header + bytes, 0, 0, header};
    std::string data(reinterpret_cast<const char*>(&file), sizeof file);
    data.append(reinterpret_cast<const char*>(&format.bmiHeader), sizeof format.bmiHeader);
    data.append(static_cast<const char*>(bits), bytes);
    const char* build = std::getenv("CORVAN_WINDOWS_BUILD");
    const std::string folder = std::string(build ? build : ".") + "\\pictures";
    CreateDirectoryA(folder.c_str(), nullptr);
    winbench::WriteFileBytes(folder + "\\" + name + ".bmp", data);
    SelectObject(dc, old);
    DeleteDC(dc);
    DeleteObject(bitmap);
    return picture;
}

constexpr COLORREF kBlue = RGB(0, 90, 168), kWhite = RGB(255, 255, 255);

RECT Pixels(const corvan::TwipsRect& r) {
    const int x = corvan::ScreenDpiX(), y = corvan::ScreenDpiY();
    return {corvan::TwipsToPixels(r.left, x), corvan::TwipsToPixels(r.top, y), corvan::TwipsToPixels(r.Right(), x),
            corvan::TwipsToPixels(r.Bottom(), y)};
}

// A bar read along row y: the pixels inside its border (blue or white) and
// the blue run at their start; the run is -1 when anything but white follows.
std::pair<int, int> BarRow(const Picture& picture, const RECT& bar, int y) {
    auto plain = [&](int x) { return picture.At(x, y) == kBlue || picture.At(x, y) == kWhite; };
    int left = bar.left, right = bar.right, x = bar.left;
    while (left < right && !plain(left)) ++left;
    while (right > left && !plain(right - 1)) --right;
    for (x = left; x < right && picture.At(x, y) == kBlue;) ++x;
    const int filled = x - left;
    for (; x < right; ++x)
        if (picture.At(x, y) != kWhite) return {right - left, -1};
    return {right - left, filled};
}

// The bars are filled where the layout puts them, by the share the rules give,
// on every row; an uninstall shows no transfer line. (The captions' texts are
// pinned by the unit tests.)
TEST_F(Page, WithoutAWindowItDrawsWhatTheLayoutComputes) {
    const corvan::PanelLayout layout = corvan::LayOutPanel(corvan::kPanelMinWidth);
    auto view = control.As<IViewObject2>(IID_IViewObject2);
    const SIZE size = corvan::PanelPixels(corvan::kPanelMinWidth);
    const struct {
        const char* picture;
        LONG mode;
        const char* script;
        int overall, transfer;  // -1: hidden
    } cases[] = {
        {"panel-0", 1, "StatusMsgChange|Preparing the installation...\nFTPStatus|0|SC_Install.scl\n", 1, 1},
        {"panel-50", 1, "StatusMsgChange|Installing CorvanClient.msi\nProgressUpdate|0.5\nFTPStatus|0.5|CorvanClient.msi\n", 50, 50},
        {"panel-100", 1, "StatusMsgChange|The installation is complete.\nProgressUpdate|1\nFTPStatus|1|Reports.mdb\n", 99, 100},
        {"panel-uninstall", 3, "StatusMsgChange|Removing Reports.mdb\nProgressUpdate|0.5\n", 50, -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.picture);
        Session(c.script, c.mode);
        const Picture picture = Capture(c.picture, size.cx, size.cy, [&](HDC dc) {
            RECTL bounds = {0, 0, size.cx, size.cy};
            EXPECT_EQ(view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, dc, &bounds, nullptr, nullptr, 0), S_OK);
        });
        for (const auto& [area, percent] : {std::pair(Pixels(layout.picStatusbar), c.overall),
                                            std::pair(Pixels(layout.picFTP), c.transfer)}) {
            const int middle = (area.top + area.bottom) / 2;
            const auto [inside, filled] = BarRow(picture, area, middle);
            if (percent < 0) {
                for (int x = area.left; x < area.right; ++x) ASSERT_EQ(picture.At(x, area.top + 2), kWhite);
                continue;
            }
            ASSERT_GT(inside, 100);
            EXPECT_NEAR(filled, inside * percent / 100.0, 1.0) << "filled " << filled << " of " << inside;
            for (int y = area.top + 1; y < area.bottom - 1; ++y) EXPECT_EQ(BarRow(picture, area, y).second, filled) << y;
        }
    }
}

constexpr int kText = 100, kPrint = 101, kCopy = 102, kClose = 103;

HWND StatusWindow() { return FindWindowA("CorvanInstallerStatusReport", nullptr); }

std::string TextOf(HWND window) {
    std::string text(static_cast<size_t>(GetWindowTextLengthA(window)) + 1, '\0');
    text.resize(static_cast<size_t>(GetWindowTextA(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

std::string ReportText() { return TextOf(GetDlgItem(StatusWindow(), kText)); }

void Click(int button) { SendMessageA(GetDlgItem(StatusWindow(), button), BM_CLICK, 0, 0); }

// The message box that a click on a button of the status window shows,
// answered with OK from a timer of its modal loop: "<title>: <text>".
std::string shownBox;

void CALLBACK AnswerBox(HWND, UINT, UINT_PTR timer, DWORD) {
    HWND box = FindWindowA("#32770", nullptr);
    if (!box || !IsWindowVisible(box)) return;
    shownBox = TextOf(box) + ": " + TextOf(GetDlgItem(box, 0xFFFF));  // the box's text has the id 0xFFFF
    KillTimer(nullptr, timer);
    PostMessageA(box, WM_COMMAND, IDOK, 0);
}

std::string ClickAndAnswer(int button) {
    shownBox = "(no box)";
    const UINT_PTR timer = SetTimer(nullptr, 0, 20, AnswerBox);
    Click(button);
    KillTimer(nullptr, timer);
    return shownBox;
}

std::string ClipboardText() {
    std::string text = "(no text)";
    if (!OpenClipboard(nullptr)) return "(clipboard busy)";
    if (HANDLE data = GetClipboardData(CF_TEXT)) text = static_cast<const char*>(GlobalLock(data)), GlobalUnlock(data);
    CloseClipboard();
    return text;
}

// A visible page window with the control activated in place in it, as a
// browser shows it; closed and gone with the object.
struct ActivePage {
    explicit ActivePage(IUnknown* control) {
        site.page = CreateWindowExA(0, "STATIC", "page", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 800, 300, nullptr,
                                    nullptr, nullptr, nullptr);
        control->QueryInterface(IID_IOleObject, ole.PutVoid());
        if (!ole) return;
        ole->SetClientSite(&site);
        RECT position = Site::kPosition;
        ole->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, &site, 0, site.page, &position);
        auto inPlace = ole.As<IOleInPlaceObject>(IID_IOleInPlaceObject);
        if (inPlace) inPlace->GetWindow(&window);
    }
    ~ActivePage() {
        if (ole) ole->Close(OLECLOSE_NOSAVE);
        if (ole) ole->SetClientSite(nullptr);
        DestroyWindow(site.page);
    }

    Site site;
    ComPtr<IOleObject> ole;
    HWND window = nullptr;  // the control's own
};

// In place the control gets a window of the rules' size inside the page,
// which owns its status report while it lives; the report keeps its lines.
TEST_F(Page, InPlaceItGetsAWindowInThePageAndShowsItsStatusReportThere) {
    Session("StatusMsgChange|Downloading SC_Install.scl\nInstallerError|The server is busy\n");
    HWND window = StatusWindow();
    ASSERT_TRUE(window);
    EXPECT_FALSE(IsWindowVisible(window));
    const std::string before = ReportText();
    EXPECT_NE(before.find(" : Downloading SC_Install.scl\r\n"), std::string::npos) << before;
    EXPECT_EQ(WindowOf(control.Get()), nullptr);
    {
        ActivePage page(control.Get());
        EXPECT_EQ(page.site.activations, 1);
        ASSERT_TRUE(IsWindow(page.window));
        EXPECT_EQ(WindowOf(control.Get()), page.window);
        EXPECT_EQ(GetParent(page.window), page.site.page);
        EXPECT_TRUE(IsWindowVisible(page.window));
        SIZEL proposed = {corvan::TwipsToHimetric(5000), corvan::TwipsToHimetric(3000)}, kept = {};
        ASSERT_EQ(page.ole->SetExtent(DVASPECT_CONTENT, &proposed), S_OK);
        ASSERT_EQ(page.ole->GetExtent(DVASPECT_CONTENT, &kept), S_OK);
        EXPECT_EQ(HimetricToTwips(kept.cx), 8000);
        EXPECT_EQ(HimetricToTwips(kept.cy), 1905);
        EXPECT_EQ(page.site.lastPosition.right - page.site.lastPosition.left, corvan::PanelPixels(8000).cx);

        Call(control.Get(), L"ShowUpdates");
        EXPECT_TRUE(IsWindowVisible(window));
        EXPECT_EQ(GetWindow(window, GW_OWNER), page.site.page);
        EXPECT_EQ(ReportText(), before);
        Click(kClose);
        EXPECT_FALSE(IsWindowVisible(window));
        Session("StatusMsgChange|Registering CorvanGrid.ocx\n");
        Call(control.Get(), L"ShowUpdates");
        EXPECT_TRUE(IsWindowVisible(window));
        ASSERT_EQ(page.ole->Close(OLECLOSE_NOSAVE), S_OK);
        EXPECT_EQ(page.site.deactivations, 1);
        EXPECT_FALSE(IsWindow(page.window));
        EXPECT_EQ(WindowOf(control.Get()), nullptr);
        page.ole->SetClientSite(nullptr);
        EXPECT_EQ(page.site.references, 1u);
    }
    // The page's window took its owned window with it; the report stays.
    Call(control.Get(), L"ShowUpdates");
    ASSERT_TRUE(StatusWindow());
    const std::string after = ReportText();
    EXPECT_EQ(after.substr(0, before.size()), before);
    EXPECT_NE(after.find(" : Registering CorvanGrid.ocx\r\n", before.size()), std::string::npos) << after;
    EXPECT_EQ(ClickAndAnswer(kCopy), "Copied...: The Status Report has been copied to the Clipboard.");
    EXPECT_EQ(ClipboardText(), after);
    const std::string none = ClickAndAnswer(kPrint);  // the prefix has no printer
    EXPECT_EQ(none.rfind("Not printed...: ", 0), 0u) << none;
    EXPECT_NE(none.find("No printer is installed"), std::string::npos) << none;
    Click(kClose);
}

}  // namespace
