#include "control/PanelPainter.h"

#include <string>

#include "control/panel_art.h"

namespace corvan {

namespace {

constexpr COLORREF kWhite = RGB(255, 255, 255);
constexpr COLORREF kBarBorder = RGB(160, 178, 200);
constexpr COLORREF kCaptionText = RGB(24, 32, 48);
constexpr COLORREF kTransferText = RGB(64, 64, 64);
constexpr COLORREF kVersionText = RGB(128, 128, 128);  // grey, as the line always was

int ScreenCaps(int index) {
    HDC screen = GetDC(nullptr);
    int value = screen ? GetDeviceCaps(screen, index) : 0;
    if (screen) ReleaseDC(nullptr, screen);
    return value > 0 ? value : 96;
}

RECT ToPixels(const TwipsRect& r) {
    int dpiX = ScreenDpiX(), dpiY = ScreenDpiY();
    return {TwipsToPixels(r.left, dpiX), TwipsToPixels(r.top, dpiY), TwipsToPixels(r.Right(), dpiX),
            TwipsToPixels(r.Bottom(), dpiY)};
}

// A label: one line, cut with an ellipsis when it does not fit.
void Label(HDC dc, const TwipsRect& where, const std::string& text, const char* face, int points, bool bold,
           COLORREF colour) {
    RECT area = ToPixels(where);
    HFONT font = CreatePanelFont(face, points, bold, ScreenDpiY());
    HGDIOBJ old = SelectObject(dc, font);
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, colour);
    DrawTextA(dc, text.c_str(), static_cast<int>(text.size()), &area,
              DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
    SelectObject(dc, old);
    DeleteObject(font);
}

void FillSolid(HDC dc, const RECT& area, COLORREF colour) {
    HBRUSH brush = CreateSolidBrush(colour);
    FillRect(dc, &area, brush);
    DeleteObject(brush);
}

// A progress bar: a thin border, inside it the back colour laid with a plain
// copy, then the left `percent` of the inside filled with the fore colour in
// the not-xor-pen draw mode.
void Bar(HDC dc, const TwipsRect& where, int percent) {
    RECT outer = ToPixels(where);
    FillSolid(dc, outer, kBarBorder);
    RECT inner = outer;
    InflateRect(&inner, -1, -1);
    FillSolid(dc, inner, kWhite);
    int filled = FillWidth(inner.right - inner.left, percent);
    if (filled <= 0) return;
    HBRUSH brush = CreateSolidBrush(kPanelBlue);
    HPEN pen = CreatePen(PS_SOLID, 1, kPanelBlue);
    HGDIOBJ oldBrush = SelectObject(dc, brush), oldPen = SelectObject(dc, pen);
    int oldMode = SetROP2(dc, R2_NOTXORPEN);
    // Rectangle's right and bottom edges are exclusive of the pen's last pixel.
    Rectangle(dc, inner.left, inner.top, inner.left + filled, inner.bottom);
    SetROP2(dc, oldMode);
    SelectObject(dc, oldBrush);
    SelectObject(dc, oldPen);
    DeleteObject(brush);
    DeleteObject(pen);
}

void Render(HDC dc, SIZE size, const ControlSurface& surface, int widthTwips) {
    RECT all = {0, 0, size.cx, size.cy};
    FillSolid(dc, all, kWhite);
    const PanelArt& art = PanelArt::Get();
    art.PaintFrame(dc, size.cx, size.cy);
    PanelLayout layout = LayOutPanel(widthTwips);
    art.PaintLogo(dc, ToPixels(layout.Image1), true);
    Label(dc, layout.lblStatus, surface.StatusCaption(), "Tahoma", 8, true, kCaptionText);
    Bar(dc, layout.picStatusbar, surface.ProgressFillPercent());
    if (surface.TransferLineVisible()) {
        Label(dc, layout.lblFTP, surface.TransferCaption(), "Verdana", 7, false, kTransferText);
        Bar(dc, layout.picFTP, surface.TransferPercent());
    }
    Label(dc, layout.lblVersion, surface.VersionCaption(), "Tahoma", 7, false, kVersionText);
}

}  // namespace

int ScreenDpiX() { return ScreenCaps(LOGPIXELSX); }
int ScreenDpiY() { return ScreenCaps(LOGPIXELSY); }

SIZE PanelPixels(int widthTwips) {
    return {TwipsToPixels(widthTwips, ScreenDpiX()), TwipsToPixels(kPanelHeight, ScreenDpiY())};
}

RECT PartPixels(int widthTwips, SurfacePart part) { return ToPixels(PartArea(LayOutPanel(widthTwips), part)); }

void PaintPanel(HDC dc, const RECT& bounds, const ControlSurface& surface, int widthTwips) {
    SIZE size = PanelPixels(widthTwips);
    BITMAPINFO format = {};
    format.bmiHeader.biSize = sizeof format.bmiHeader;
    format.bmiHeader.biWidth = size.cx;
    format.bmiHeader.biHeight = -size.cy;
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    format.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HBITMAP canvas = CreateDIBSection(nullptr, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (!canvas) return;
    HDC memory = CreateCompatibleDC(nullptr);
    HGDIOBJ old = SelectObject(memory, canvas);
    Render(memory, size, surface, widthTwips);
    int width = bounds.right - bounds.left, height = bounds.bottom - bounds.top;
    if (width == size.cx && height == size.cy) {
        BitBlt(dc, bounds.left, bounds.top, width, height, memory, 0, 0, SRCCOPY);
    } else {
        int oldMode = SetStretchBltMode(dc, HALFTONE);
        SetBrushOrgEx(dc, 0, 0, nullptr);
        StretchBlt(dc, bounds.left, bounds.top, width, height, memory, 0, 0, size.cx, size.cy, SRCCOPY);
        SetStretchBltMode(dc, oldMode);
    }
    SelectObject(memory, old);
    DeleteDC(memory);
    DeleteObject(canvas);
}

}  // namespace corvan
