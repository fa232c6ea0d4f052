#include "control/report_printer.h"

#include <vector>

#include <windows.h>
#include <winspool.h>

#include "common/unique_any.h"
#include "control/panel_art.h"

namespace corvan {

namespace {

using PrinterDc = UniqueAny<HDC, &DeleteDC>;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find("\r\n", start);
        if (end == std::string::npos) end = text.size();
        lines.push_back(text.substr(start, end - start));
        start = end + 2;
    }
    return lines;
}

}  // namespace

std::string DefaultPrinter() {
    DWORD size = 0;
    GetDefaultPrinterA(nullptr, &size);
    if (size == 0) return "";
    std::string name(size, '\0');
    if (!GetDefaultPrinterA(name.data(), &size)) return "";
    name.resize(name.find('\0'));
    return name;
}

bool PrintText(const std::string& printer, const std::string& title, const std::string& text) {
    PrinterDc dc(CreateDCA("WINSPOOL", printer.c_str(), nullptr, nullptr));
    if (!dc) return false;
    DOCINFOA document = {};
    document.cbSize = sizeof document;
    document.lpszDocName = title.c_str();
    if (StartDocA(dc.Get(), &document) <= 0) return false;

    int dpiX = GetDeviceCaps(dc.Get(), LOGPIXELSX), dpiY = GetDeviceCaps(dc.Get(), LOGPIXELSY);
    RECT page = {dpiX * 3 / 4, dpiY * 3 / 4, GetDeviceCaps(dc.Get(), HORZRES) - dpiX * 3 / 4,
                 GetDeviceCaps(dc.Get(), VERTRES) - dpiY * 3 / 4};
    HFONT font = CreatePanelFont("Tahoma", 10, false, dpiY);
    bool ok = true;
    int y = page.top;
    auto startPage = [&] {
        ok = ok && StartPage(dc.Get()) > 0;
        // Some drivers reset the device context's objects with every page.
        SelectObject(dc.Get(), font);
        y = page.top;
    };
    startPage();
    for (const std::string& line : Lines(text)) {
        if (!ok) break;
        const char* shown = line.empty() ? " " : line.c_str();
        int length = line.empty() ? 1 : static_cast<int>(line.size());
        constexpr UINT format = DT_LEFT | DT_WORDBREAK | DT_NOPREFIX | DT_EXPANDTABS;
        RECT area = {page.left, 0, page.right, 0};
        DrawTextA(dc.Get(), shown, length, &area, format | DT_CALCRECT);
        int height = area.bottom;
        if (y + height > page.bottom && y > page.top) {
            ok = EndPage(dc.Get()) > 0;
            startPage();
        }
        area = {page.left, y, page.right, y + height};
        DrawTextA(dc.Get(), shown, length, &area, format);
        y += height;
    }
    ok = ok && EndPage(dc.Get()) > 0;
    if (ok) {
        ok = EndDoc(dc.Get()) > 0;
    } else {
        AbortDoc(dc.Get());
    }
    SelectObject(dc.Get(), GetStockObject(SYSTEM_FONT));
    DeleteObject(font);
    return ok;
}

}  // namespace corvan
