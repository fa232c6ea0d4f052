#include "control/frmStatus.h"

#include <cstdint>
#include <cstring>

#include "common/this_module.h"
#include "control/PanelPainter.h"
#include "control/ScreenPointer.h"
#include "control/panel_art.h"
#include "control/report_printer.h"
#include "control/window_trap.h"

namespace corvan {

namespace {

constexpr int kClientWidth = 520, kClientHeight = 340;
constexpr int kMargin = 16;
constexpr int kButtonWidth = 84, kButtonHeight = 26, kButtonGap = 8;
constexpr int kTextTop = 50;

HWND Child(HWND window, int id) { return GetDlgItem(window, id); }

void Place(HWND child, int x, int y, int width, int height) {
    SetWindowPos(child, nullptr, x, y, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace

frmStatus& frmStatus::Instance() {
    static frmStatus form;
    return form;
}

frmStatus::frmStatus() { Load(); }

void frmStatus::Load() {
    static ATOM registered = [] {
        WNDCLASSA windowClass = {};
        windowClass.lpfnWndProc = &frmStatus::WindowProc;
        windowClass.hInstance = ThisModule();
        windowClass.hCursor = LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_ARROW));
        windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
        windowClass.lpszClassName = kWindowClass;
        return RegisterClassA(&windowClass);
    }();
    (void)registered;

    DWORD style = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX | WS_CLIPCHILDREN;
    RECT frame = {0, 0, kClientWidth, kClientHeight};
    AdjustWindowRectEx(&frame, style, FALSE, 0);
    int width = frame.right - frame.left, height = frame.bottom - frame.top;
    RECT work = {0, 0, 1024, 768};
    SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0);
    window_ = CreateWindowExA(0, kWindowClass, kCaption, style, work.left + (work.right - work.left - width) / 2,
                              work.top + (work.bottom - work.top - height) / 2, width, height, nullptr, nullptr,
                              ThisModule(), nullptr);
    if (!window_) return;
    SetWindowLongPtrA(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    // The window and its report live until the process ends, so the code
    // behind its window procedure must stay loaded as long.
    HMODULE pinned = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCSTR>(reinterpret_cast<uintptr_t>(&frmStatus::WindowProc)), &pinned);

    if (!font_) font_ = CreatePanelFont("Tahoma", 8, false, ScreenDpiY());
    textBox_ = CreateWindowExA(WS_EX_CLIENTEDGE, "EDIT", "",
                               WS_CHILD | WS_VISIBLE | WS_VSCROLL | ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL, 0, 0,
                               0, 0, window_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(txtStatus)), ThisModule(),
                               nullptr);
    // The report grows all session long; the box's default limit is 32K.
    SendMessageA(textBox_, EM_SETLIMITTEXT, 0, 0);
    const struct {
        int id;
        const char* caption;
    } buttons[] = {{cmdPrint, "Print"}, {cmdCopy, "Copy"}, {cmdClose, "Close"}};
    for (const auto& button : buttons)
        CreateWindowExA(0, "BUTTON", button.caption, WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, 0, 0, 0, 0,
                        window_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(button.id)), ThisModule(), nullptr);
    for (int id : {txtStatus, cmdPrint, cmdCopy, cmdClose})
        SendMessageA(Child(window_, id), WM_SETFONT, reinterpret_cast<WPARAM>(font_), FALSE);
    LayOut();
    // A window made again after its owner took it away shows the whole report.
    SetWindowTextA(textBox_, text_.c_str());
    desktop_.DoEvents();
}

void frmStatus::LayOut() {
    RECT client;
    GetClientRect(window_, &client);
    int width = client.right, height = client.bottom;
    int buttonTop = height - kMargin - kButtonHeight;
    Place(textBox_, kMargin, kTextTop, width - 2 * kMargin, buttonTop - 12 - kTextTop);
    int x = width - kMargin - kButtonWidth;
    for (int id : {cmdClose, cmdCopy, cmdPrint}) {
        Place(Child(window_, id), x, buttonTop, kButtonWidth, kButtonHeight);
        x -= kButtonWidth + kButtonGap;
    }
}

void frmStatus::Status(const std::string& text) {
    text_ += text;
    if (!window_) {
        Load();  // shows the whole report, this text with it
    } else if (textBox_) {
        int end = GetWindowTextLengthA(textBox_);
        SendMessageA(textBox_, EM_SETSEL, end, end);
        SendMessageA(textBox_, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(text.c_str()));
    }
    desktop_.DoEvents();
}

void frmStatus::Display(bool showPrint, HWND owner) {
    if (!window_) Load();
    if (!window_) return;
    ShowWindow(Child(window_, cmdPrint), showPrint ? SW_SHOW : SW_HIDE);
    HWND root = owner ? GetAncestor(owner, GA_ROOT) : nullptr;
    SetWindowLongPtrA(window_, GWLP_HWNDPARENT, reinterpret_cast<LONG_PTR>(root));
    ShowWindow(window_, SW_SHOWNORMAL);
    SetForegroundWindow(window_);
}

int frmStatus::Percent() {
    desktop_.DoEvents();
    return 0;
}

void frmStatus::Copy() {
    bool copied = false;
    if (OpenClipboard(window_)) {
        EmptyClipboard();
        // An empty report leaves the clipboard without text.
        if (!text_.empty()) {
            HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, text_.size() + 1);
            if (void* bytes = memory ? GlobalLock(memory) : nullptr) {
                std::memcpy(bytes, text_.c_str(), text_.size() + 1);
                GlobalUnlock(memory);
                if (SetClipboardData(CF_TEXT, memory)) memory = nullptr;
            }
            if (memory) GlobalFree(memory);
        }
        copied = CloseClipboard() != FALSE;
    }
    if (copied)
        desktop_.MsgBox("The Status Report has been copied to the Clipboard.", msgbox::vbInformation, "Copied...");
    else
        desktop_.MsgBox("The Status Report could not be copied: another program is holding the Clipboard.",
                        msgbox::vbExclamation, "Not copied...");
}

void frmStatus::Print() {
    std::string printer = DefaultPrinter();
    if (printer.empty()) {
        desktop_.MsgBox("No printer is installed, so the Status Report could not be printed.", msgbox::vbExclamation,
                        "Not printed...");
        return;
    }
    if (!PrintText(printer, kCaption, text_)) {
        desktop_.MsgBox("The Status Report could not be sent to the printer \"" + printer + "\".",
                        msgbox::vbExclamation, "Not printed...");
        return;
    }
    desktop_.MsgBox("The Status Report has been sent to the printer.", msgbox::vbInformation, "Printed...");
}

void frmStatus::Close() { ShowWindow(window_, SW_HIDE); }

void frmStatus::Paint(HDC dc) {
    RECT client;
    GetClientRect(window_, &client);
    FillRect(dc, &client, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    const PanelArt& art = PanelArt::Get();
    art.PaintFrame(dc, client.right, client.bottom);
    RECT logo = {kMargin, 12, client.right - kMargin, kTextTop - 8};
    art.PaintLogo(dc, logo, false);
}

LRESULT frmStatus::HandleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_PAINT: {
            PAINTSTRUCT paint;
            HDC dc = BeginPaint(window_, &paint);
            Paint(dc);
            EndPaint(window_, &paint);
            return 0;
        }
        case WM_PRINTCLIENT:
            Paint(reinterpret_cast<HDC>(wParam));
            return 0;
        case WM_ERASEBKGND:
            return 1;
        case WM_CTLCOLORSTATIC:
            // The report is read-only but stays on white, as a document.
            if (reinterpret_cast<HWND>(lParam) == textBox_) {
                SetBkColor(reinterpret_cast<HDC>(wParam), RGB(255, 255, 255));
                SetTextColor(reinterpret_cast<HDC>(wParam), GetSysColor(COLOR_WINDOWTEXT));
                return reinterpret_cast<LRESULT>(GetStockObject(WHITE_BRUSH));
            }
            break;
        case WM_SETCURSOR:
            if (ShowScreenPointer()) return TRUE;
            break;
        case WM_COMMAND:
            if (HIWORD(wParam) == BN_CLICKED) {
                switch (LOWORD(wParam)) {
                    case cmdPrint: Print(); return 0;
                    case cmdCopy: Copy(); return 0;
                    case cmdClose: Close(); return 0;
                    default: break;
                }
            }
            break;
        case WM_CLOSE:
            Close();
            return 0;
        case WM_NCDESTROY:
            // Windows destroys an owned window with its owner, when the page
            // goes; the report stays and the next use makes a new window.
            window_ = textBox_ = nullptr;
            break;
        default:
            break;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

LRESULT CALLBACK frmStatus::WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* form = reinterpret_cast<frmStatus*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (!form) return DefWindowProcA(window, message, wParam, lParam);
    return Trapped(window, message, [&] { return form->HandleMessage(window, message, wParam, lParam); });
}

}  // namespace corvan
