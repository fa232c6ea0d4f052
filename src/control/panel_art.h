#pragma once
#include <array>

#include <windows.h>

#include "control/panel_layout.h"

namespace corvan {

// The progress-bar blue of the panel, its bars and its frame.
inline constexpr COLORREF kPanelBlue = RGB(0, 90, 168);

// The pictures of the frame and the logo, loaded once from the module's
// resources. A module without them (a test program that links the control
// directly) paints neither.
class PanelArt {
public:
    static const PanelArt& Get();
    ~PanelArt();
    PanelArt(const PanelArt&) = delete;
    PanelArt& operator=(const PanelArt&) = delete;

    // Tiles the edges along the sides of a `width` x `height` area at the
    // origin of `dc` and places the corners.
    void PaintFrame(HDC dc, int width, int height) const;
    // The logo picture with the product's name beside it, centred on the
    // height of `area` and against its right edge when `right`, else its
    // left edge.
    void PaintLogo(HDC dc, const RECT& area, bool right) const;

private:
    PanelArt();

    std::array<HBITMAP, kFrameImages> frame_{};
    FrameSizes sizes_{};
    HBITMAP logo_ = nullptr;
    ImageSize logoSize_;
};

// A font of the panel: `points` at the screen's resolution.
HFONT CreatePanelFont(const char* face, int points, bool bold, int dpi);

}  // namespace corvan
