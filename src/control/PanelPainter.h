#pragma once
#include <windows.h>

#include "control/ControlSurface.h"
#include "control/panel_layout.h"

namespace corvan {

// The screen's resolution, in pixels per inch.
int ScreenDpiX();
int ScreenDpiY();

// The panel `widthTwips` wide (already fitted), in screen pixels.
SIZE PanelPixels(int widthTwips);
// Where a part of that panel lies, in screen pixels.
RECT PartPixels(int widthTwips, SurfacePart part);

// Paints the panel for `surface` into `bounds` of `dc`: frame, logo, status
// caption and overall bar, transfer line, version line. The panel is drawn
// at its own size on the screen and copied, or stretched when `bounds` has
// another size (a printer, a thumbnail).
void PaintPanel(HDC dc, const RECT& bounds, const ControlSurface& surface, int widthTwips);

}  // namespace corvan
