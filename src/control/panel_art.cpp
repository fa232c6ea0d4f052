#include "control/panel_art.h"

#include "common/this_module.h"
#include "control/panel_art_ids.h"

namespace corvan {

namespace {

constexpr char kProductName[] = "Corvan Connect";
constexpr int kLogoGap = 6;  // pixels between the picture and the name

HBITMAP LoadPicture(int id, ImageSize& size) {
    auto picture = static_cast<HBITMAP>(
        LoadImageA(ThisModule(), MAKEINTRESOURCEA(id), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
    BITMAP facts = {};
    if (picture && GetObjectA(picture, sizeof facts, &facts)) size = {facts.bmWidth, facts.bmHeight};
    return picture;
}

void Blit(HDC dc, HBITMAP picture, int x, int y, const ImageSize& size) {
    HDC source = CreateCompatibleDC(dc);
    HGDIOBJ old = SelectObject(source, picture);
    BitBlt(dc, x, y, size.width, size.height, source, 0, 0, SRCCOPY);
    SelectObject(source, old);
    DeleteDC(source);
}

}  // namespace

const PanelArt& PanelArt::Get() {
    static const PanelArt art;
    return art;
}

PanelArt::PanelArt() {
    static constexpr int ids[kFrameImages] = {IDB_FRAME_HEADER,     IDB_FRAME_FOOTER,      IDB_FRAME_LEFT,
                                              IDB_FRAME_RIGHT,      IDB_FRAME_UPPER_LEFT,  IDB_FRAME_UPPER_RIGHT,
                                              IDB_FRAME_LOWER_LEFT, IDB_FRAME_LOWER_RIGHT};
    for (int i = 0; i < kFrameImages; ++i) frame_[i] = LoadPicture(ids[i], sizes_[i]);
    logo_ = LoadPicture(IDB_LOGO, logoSize_);
}

PanelArt::~PanelArt() {
    for (HBITMAP picture : frame_)
        if (picture) DeleteObject(picture);
    if (logo_) DeleteObject(logo_);
}

void PanelArt::PaintFrame(HDC dc, int width, int height) const {
    for (const FramePiece& piece : FramePieces(width, height, sizes_)) {
        auto index = static_cast<size_t>(piece.image);
        if (frame_[index]) Blit(dc, frame_[index], piece.x, piece.y, sizes_[index]);
    }
}

void PanelArt::PaintLogo(HDC dc, const RECT& area, bool right) const {
    if (!logo_) return;
    HFONT font = CreatePanelFont("Tahoma", 10, true, GetDeviceCaps(dc, LOGPIXELSY));
    HGDIOBJ oldFont = SelectObject(dc, font);
    SIZE name = {};
    GetTextExtentPoint32A(dc, kProductName, static_cast<int>(sizeof kProductName - 1), &name);
    int width = logoSize_.width + kLogoGap + name.cx;
    int left = right ? area.right - width : area.left;
    int middle = (area.top + area.bottom) / 2;
    Blit(dc, logo_, left, middle - logoSize_.height / 2, logoSize_);
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, kPanelBlue);
    TextOutA(dc, left + logoSize_.width + kLogoGap, middle - name.cy / 2, kProductName,
             static_cast<int>(sizeof kProductName - 1));
    SelectObject(dc, oldFont);
    DeleteObject(font);
}

HFONT CreatePanelFont(const char* face, int points, bool bold, int dpi) {
    return CreateFontA(-MulDiv(points, dpi, 72), 0, 0, 0, bold ? FW_BOLD : FW_NORMAL, FALSE, FALSE, FALSE,
                       DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                       DEFAULT_PITCH | FF_SWISS, face);
}

}  // namespace corvan
