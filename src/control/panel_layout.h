#pragma once
#include <array>
#include <vector>

#include "control/ControlSurface.h"

namespace corvan {

// The control's measures are twips, as the page sees them; its pictures are
// pixels.
inline constexpr int kPanelHeight = 1905;    // always
inline constexpr int kPanelMinWidth = 8000;  // at least

struct TwipsRect {
    int left = 0, top = 0, width = 0, height = 0;
    int Right() const { return left + width; }
    int Bottom() const { return top + height; }
};

struct PanelSize {
    int width = kPanelMinWidth, height = kPanelHeight;
};

// The size rules: any height becomes 1905, a width below 8000 becomes 8000.
PanelSize FitPanel(int width, int height);

// Where the panel's children sit for a panel of this width (already fitted).
struct PanelLayout {
    int width = kPanelMinWidth, height = kPanelHeight;
    TwipsRect lblStatus, Image1, picStatusbar, lblFTP, picFTP, lblVersion;
};
PanelLayout LayOutPanel(int width);

// What must be drawn again when a part changes: the status caption with the
// overall bar, the transfer text with its bar, the version line.
TwipsRect PartArea(const PanelLayout& layout, SurfacePart part);

// Unit conversions, rounded to the nearest whole unit.
int TwipsToPixels(int twips, int dpi);
int PixelsToTwips(int pixels, int dpi);
int TwipsToHimetric(int twips);
int HimetricToTwips(int himetric);
// The panel width of a window this many pixels wide: a window that holds
// the least width, rounded to pixels, is the least width.
int PanelWidthForPixels(int pixels, int dpi);

// The pixels of a bar `width` wide that are filled at `percent`: a
// proportional share, rounded, never outside the bar.
int FillWidth(int width, int percent);

// The frame: four edge pictures tiled along the sides, then the four corner
// pictures on top. Sizes and positions in pixels.
enum class FrameImage { Header, Footer, Left, Right, UpperLeft, UpperRight, LowerLeft, LowerRight };
inline constexpr int kFrameImages = 8;
struct ImageSize {
    int width = 0, height = 0;
};
using FrameSizes = std::array<ImageSize, kFrameImages>;  // indexed by FrameImage
struct FramePiece {
    FrameImage image;
    int x, y;
};
// Every piece of the frame of a `width` x `height` area, in painting order.
// The header runs edge to edge along the top, the footer along the bottom,
// the left and right images down the sides; the right-hand corners sit at the
// width less their own width, the lower ones at the height less their own
// height. A picture of no size is left out.
std::vector<FramePiece> FramePieces(int width, int height, const FrameSizes& sizes);

}  // namespace corvan
