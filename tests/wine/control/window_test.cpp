// What the control shows on a real desktop: its window in a container, its
// panel drawn through IViewObject::Draw and read pixel by pixel against the
// layout, its repaints while a session runs, and the status report window
// with the clipboard and a printer installed in the prefix.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <regex>
#include <thread>

#include "control/PanelPainter.h"
#include "control/panel_layout.h"
#include "probe_server.h"

#include <winspool.h>

using namespace control_tests;

namespace {

using corvan::HimetricToTwips;

HWND WindowOf(IDispatch* control) {
    VARIANT handle = Call(control, L"hwnd", DISPATCH_PROPERTYGET);
    EXPECT_EQ(V_VT(&handle), VT_I4);
    return reinterpret_cast<HWND>(static_cast<LONG_PTR>(V_I4(&handle)));
}

TEST_F(Page, InPlaceTheControlGetsAWindowOfTheRulesSizeInsideThePage) {
    EXPECT_EQ(WindowOf(control.Get()), nullptr);
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
    const SIZE panel = corvan::PanelPixels(8000);
    EXPECT_EQ(page.site.lastPosition.right - page.site.lastPosition.left, panel.cx);
    // A container placing it in a box of another shape is told where it went.
    RECT square = {10, 20, 310, 320}, client;
    const int told = page.site.positionChanges;
    ASSERT_EQ(control.As<IOleInPlaceObject>(IID_IOleInPlaceObject)->SetObjectRects(&square, &square), S_OK);
    GetClientRect(page.window, &client);
    EXPECT_EQ(client.right, panel.cx);
    EXPECT_EQ(client.bottom, panel.cy);
    EXPECT_EQ(page.site.positionChanges, told + 1);

    ASSERT_EQ(page.ole->Close(OLECLOSE_NOSAVE), S_OK);
    EXPECT_EQ(page.site.deactivations, 1);
    EXPECT_FALSE(IsWindow(page.window));
    EXPECT_EQ(WindowOf(control.Get()), nullptr);
    page.ole->SetClientSite(nullptr);
    EXPECT_EQ(page.site.references, 1u);
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

class Panel : public Page {
protected:
    Picture Render() {
        auto view = control.As<IViewObject2>(IID_IViewObject2);
        SIZEL extent = {};
        view->GetExtent(DVASPECT_CONTENT, -1, nullptr, &extent);
        const SIZE size = corvan::PanelPixels(HimetricToTwips(extent.cx));
        return Capture(size.cx, size.cy, [&](HDC dc) {
            RECTL bounds = {0, 0, size.cx, size.cy};
            EXPECT_EQ(view->Draw(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, dc, &bounds, nullptr, nullptr, 0), S_OK);
        });
    }
    Picture After(const char* script, LONG mode = 1) {
        Session(script, mode);
        return Render();
    }
    const corvan::PanelLayout layout = corvan::LayOutPanel(corvan::kPanelMinWidth);
};

// The bars are filled where the layout puts them, by the share the rules give,
// on every row; an uninstall shows no transfer line.
TEST_F(Panel, WithoutAWindowItDrawsWhatTheLayoutComputes) {
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
        const Picture picture = After(c.script, c.mode);
        picture.Save(c.picture);
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
    // The captions are the rules' texts: at 0.5 the message, two blanks and
    // "50%" show the same pixels as a message spelling that out at progress
    // 0, where no percentage is added; one blank less shows.
    const Picture half = After("StatusMsgChange|Installing setup.msi\nProgressUpdate|0.5\nFTPStatus|0.5|setup.msi\n");
    const Picture spelled = After("StatusMsgChange|Installing setup.msi  50%\nFTPStatus|0.504|setup.msi\n");
    const Picture oneBlank = After("StatusMsgChange|Installing setup.msi 50%\nFTPStatus|0.51|setup.msi\n");
    for (const RECT& caption : {Pixels(layout.lblStatus), Pixels(layout.lblFTP)}) {
        EXPECT_TRUE(half.SameIn(spelled, caption));
        EXPECT_FALSE(half.SameIn(oneBlank, caption));
    }
}

std::vector<RECT> paints;  // the update area of each paint of the control's window
WNDPROC controlProcedure = nullptr;

LRESULT CALLBACK NotePaints(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    RECT update = {};
    if (message == WM_PAINT) GetUpdateRect(window, &update, FALSE), paints.push_back(update);
    return CallWindowProcA(controlProcedure, window, message, wParam, lParam);
}

// The engine keeps the thread busy. The transfer line lets messages run; the
// progress after it is painted by the panel itself or not before the end.
TEST_F(Panel, EveryStateChangeReachesTheScreenWhileTheSessionRuns) {
    ActivePage page(control.Get());
    controlProcedure = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(page.window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&NotePaints)));
    paints.clear();
    Session("FTPStatus|0.3|data.cab\nProgressUpdate|0.4\n");
    for (const RECT& area : {Pixels(layout.lblStatus), Pixels(layout.lblFTP)}) {
        RECT seen;
        EXPECT_TRUE(std::any_of(paints.begin(), paints.end(), [&](const RECT& paint) {
            return IntersectRect(&seen, &paint, &area) && EqualRect(&seen, &area);
        })) << paints.size() << " paints";
    }
    SetWindowLongPtrA(page.window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(controlProcedure));
}

// ---- the status report window ----

constexpr int kText = 100, kPrint = 101, kCopy = 102, kClose = 103;

HWND StatusWindow() { return FindWindowA("CorvanInstallerStatusReport", nullptr); }

std::string TextOf(HWND window) {
    std::string text(static_cast<size_t>(GetWindowTextLengthA(window)) + 1, '\0');
    text.resize(static_cast<size_t>(GetWindowTextA(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

std::string ReportText() { return TextOf(GetDlgItem(StatusWindow(), kText)); }

void Click(int button) { SendMessageA(GetDlgItem(StatusWindow(), button), BM_CLICK, 0, 0); }

BOOL CALLBACK FindStaticText(HWND child, LPARAM found) {
    char kind[32] = {};
    GetClassNameA(child, kind, sizeof kind);
    if (lstrcmpiA(kind, "Static") == 0 && GetWindowTextLengthA(child)) *reinterpret_cast<std::string*>(found) = TextOf(child);
    return TRUE;
}

// Clicks a button of the status window and answers the message box it shows
// with OK: "<title>: <text>".
std::string ClickAndAnswer(int button) {
    std::string seen = "(no box)";
    std::atomic<bool> clicked{false};
    std::thread watcher([&] {
        for (int i = 0; i < 500 && !clicked; ++i, Sleep(20)) {
            HWND box = FindWindowA("#32770", nullptr);
            if (!box || !IsWindowVisible(box)) continue;
            std::string text;
            EnumChildWindows(box, &FindStaticText, reinterpret_cast<LPARAM>(&text));
            seen = TextOf(box) + ": " + text;
            PostMessageA(box, WM_COMMAND, IDOK, 0);
            return;
        }
    });
    Click(button);
    clicked = true;
    watcher.join();
    return seen;
}

TEST_F(Page, TheStatusReportKeepsItsLinesHiddenAndShownAndOutlivesItsOwner) {
    Session("StatusMsgChange|Downloading SC_Install.scl\nInstallerError|The server is busy\n");
    HWND window = StatusWindow();
    ASSERT_TRUE(window);
    EXPECT_FALSE(IsWindowVisible(window));
    const std::string before = ReportText();
    EXPECT_TRUE(std::regex_search(before, std::regex(R"(\d\d/\d\d/\d{4} - \d\d:\d\d:\d\d : Downloading SC_Install\.scl\r\n)"
                                                     R"(.{21} : The server is busy\r\n$)")))
        << before;
    {
        ActivePage page(control.Get());
        Call(control.Get(), L"ShowUpdates");
        EXPECT_TRUE(IsWindowVisible(window));
        EXPECT_EQ(GetWindow(window, GW_OWNER), page.site.page);
        EXPECT_EQ(ReportText(), before);
        Click(kClose);
        EXPECT_FALSE(IsWindowVisible(window));
        Session("StatusMsgChange|Registering CorvanGrid.ocx\n");
        Call(control.Get(), L"ShowUpdates");
        EXPECT_TRUE(IsWindowVisible(window));
        RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
        RECT frame;
        GetWindowRect(window, &frame);
        HDC screen = GetWindowDC(window);
        Capture(frame.right - frame.left, frame.bottom - frame.top, [&](HDC dc) {
            BitBlt(dc, 0, 0, frame.right - frame.left, frame.bottom - frame.top, screen, 0, 0, SRCCOPY);
        }).Save("status-window");
        ReleaseDC(window, screen);
    }
    // The page's window took its owned window with it; the report stays.
    Call(control.Get(), L"ShowUpdates");
    ASSERT_TRUE(StatusWindow());
    const std::string after = ReportText();
    EXPECT_EQ(after.substr(0, before.size()), before);
    EXPECT_TRUE(std::regex_match(after.substr(before.size()), std::regex(R"(.{21} : Registering CorvanGrid\.ocx\r\n)")))
        << after;
    Click(kClose);
}

// A PostScript printer of Wine's own driver whose port writes each job into
// a file; the default printer while the object lives.
class TestPrinter {
public:
    static constexpr char kName[] = "Corvan Test Printer", kPort[] = "LPT1:";

    explicit TestPrinter(const std::string& job) {
        char folder[MAX_PATH] = {};
        DWORD size = sizeof folder;
        GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<BYTE*>(folder), size, &size);
        CreateDirectoryA(folder, nullptr);
        CreateDirectoryA((std::string(folder) + "\\3").c_str(), nullptr);
        // The least description Wine's driver takes: one page size.
        winbench::WriteFileBytes(std::string(folder) + "\\3\\corvan.ppd",
            "*PPD-Adobe: \"4.3\"\n*ModelName: \"Corvan Test Printer\"\n*NickName: \"Corvan Test Printer\"\n"
            "*DefaultResolution: 300dpi\n*OpenUI *PageSize: PickOne\n*DefaultPageSize: Letter\n"
            "*PageSize Letter/US Letter: \"<</PageSize[612 792]>>setpagedevice\"\n*CloseUI: *PageSize\n"
            "*DefaultImageableArea: Letter\n*ImageableArea Letter/US Letter: \"18 36 594 756\"\n"
            "*DefaultPaperDimension: Letter\n*PaperDimension Letter/US Letter: \"612 792\"\n");
        char driverName[] = "Wine PostScript Driver", driverPath[] = "wineps.drv", data[] = "corvan.ppd";
        DRIVER_INFO_3A driver = {3, driverName, nullptr, driverPath, data, driverPath, nullptr, nullptr, nullptr, nullptr};
        AddPrinterDriverA(nullptr, 3, reinterpret_cast<BYTE*>(&driver));
        // Wine sends what is printed to a port to the Unix file named here.
        using UnixName = char*(CDECL*)(const WCHAR*);
        auto unixName = reinterpret_cast<UnixName>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name")));
        const std::wstring wide(job.begin(), job.end());
        char* target = unixName ? unixName(wide.c_str()) : nullptr;
        RegSetKeyValueA(HKEY_CURRENT_USER, "Software\\Wine\\Printing\\Spooler", kPort, REG_SZ, target ? target : "",
                        target ? static_cast<DWORD>(lstrlenA(target) + 1) : 1);
        HeapFree(GetProcessHeap(), 0, target);
        PRINTER_INFO_2A printer = {};
        printer.pPrinterName = const_cast<char*>(kName);
        printer.pPortName = const_cast<char*>(kPort);
        printer.pDriverName = driverName;
        printer.pPrintProcessor = const_cast<char*>("WinPrint");
        printer.pDatatype = const_cast<char*>("RAW");
        if (HANDLE added = AddPrinterA(nullptr, 2, reinterpret_cast<BYTE*>(&printer))) ClosePrinter(added);
        installed = SetDefaultPrinterA(kName) != FALSE;
    }
    ~TestPrinter() {
        HANDLE printer = nullptr;
        if (OpenPrinterA(const_cast<char*>(kName), &printer, nullptr)) DeletePrinter(printer), ClosePrinter(printer);
        RegDeleteKeyValueA(HKEY_CURRENT_USER, "Software\\Wine\\Printing\\Spooler", kPort);
    }
    bool installed = false;
};

// The letters of a text, and those of a PostScript job of Wine's driver,
// which shows text glyph by glyph ("/H glyphshow").
std::string Letters(const std::string& text) {
    std::string letters;
    for (char c : text)
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) letters += c;
    return letters;
}

std::string PrintedLetters(const std::string& job) {
    std::string letters;
    const std::regex glyph(R"(/([A-Za-z]) glyphshow)");
    for (auto m = std::sregex_iterator(job.begin(), job.end(), glyph); m != std::sregex_iterator(); ++m) letters += (*m)[1].str();
    return letters;
}

std::string ClipboardText() {
    std::string text = "(no text)";
    if (!OpenClipboard(nullptr)) return "(clipboard busy)";
    if (HANDLE data = GetClipboardData(CF_TEXT)) text = static_cast<const char*>(GlobalLock(data)), GlobalUnlock(data);
    CloseClipboard();
    return text;
}

TEST_F(Page, TheStatusReportIsCopiedToTheClipboardAndPrintedOnTheDefaultPrinter) {
    Session("StatusMsgChange|Installing CorvanClient.msi\nInstallerError|Registration failed for CorvanGrid.ocx\n");
    Call(control.Get(), L"ShowUpdates");
    EXPECT_EQ(ClickAndAnswer(kCopy), "Copied...: The Status Report has been copied to the Clipboard.");
    EXPECT_EQ(ClipboardText(), ReportText());
    const std::string none = ClickAndAnswer(kPrint);
    EXPECT_EQ(none.rfind("Not printed...: ", 0), 0u) << none;
    EXPECT_NE(none.find("No printer is installed"), std::string::npos) << none;

    winbench::ScratchFolder folder("status-print");
    {
        TestPrinter printer(folder.Path() + "job.ps");
        ASSERT_TRUE(printer.installed);
        EXPECT_EQ(ClickAndAnswer(kPrint), "Printed...: The Status Report has been sent to the printer.");
        const std::string postscript = winbench::ReadFileBytes(folder.Path() + "job.ps");
        EXPECT_NE(postscript.find("%%Title: Status Report"), std::string::npos) << postscript.substr(0, 300);
        EXPECT_EQ(PrintedLetters(postscript), Letters(ReportText()));
    }
    Click(kClose);
}

}  // namespace
