#!/usr/bin/env python3
"""Draws the pictures of the control's panel and of the status report window.

The frame is a thin line in the progress-bar blue RGB(0, 90, 168) fading
inwards over four pixels, with rounded corners; the logo is a blue rounded
square holding a white arrow into a tray. Every picture lies on white, the
panel's own background. Writes 24-bit BMP files into src/control/art/, which
the module embeds as BITMAP resources:

    tools/draw-panel-art.py
"""
import math
import os
import struct

BLUE = (0, 90, 168)
WHITE = (255, 255, 255)
# The frame from its outer pixel inwards.
EDGE = [BLUE, (96, 150, 206), (198, 218, 240), (238, 244, 251)]
TILE = 16       # length of an edge picture along its side
CORNER = 8      # corner pictures are square
LOGO = 24       # the logo is square
SAMPLES = 4     # supersampling per axis, for smooth curves

HERE = os.path.dirname(os.path.abspath(__file__))
ART = os.path.join(HERE, "..", "src", "control", "art")


def write_bmp(name, width, height, pixel):
    """pixel(x, y) -> (r, g, b), y downwards."""
    stride = (width * 3 + 3) & ~3
    rows = []
    for y in reversed(range(height)):
        row = bytearray()
        for x in range(width):
            r, g, b = pixel(x, y)
            row += bytes((b, g, r))
        row += bytes(stride - len(row))
        rows.append(bytes(row))
    data = b"".join(rows)
    header = struct.pack("<2sIHHI", b"BM", 14 + 40 + len(data), 0, 0, 14 + 40)
    info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, 24, 0, len(data), 2835, 2835, 0, 0)
    with open(os.path.join(ART, name), "wb") as f:
        f.write(header + info + data)


def smooth(colour_at):
    """Averages colour_at(x, y) (continuous coordinates) over each pixel."""
    def pixel(x, y):
        total = [0, 0, 0]
        for i in range(SAMPLES):
            for j in range(SAMPLES):
                c = colour_at(x + (i + 0.5) / SAMPLES, y + (j + 0.5) / SAMPLES)
                for k in range(3):
                    total[k] += c[k]
        return tuple(round(t / SAMPLES ** 2) for t in total)
    return pixel


def edge_colour(depth):
    """Colour at `depth` pixels inside the frame's outer line."""
    if depth < 0:
        return WHITE
    band = int(depth)
    return EDGE[band] if band < len(EDGE) else WHITE


def corner(flip_x, flip_y):
    def colour_at(x, y):
        if flip_x:
            x = CORNER - x
        if flip_y:
            y = CORNER - y
        # The outer line is a quarter circle around the corner's inner point.
        return edge_colour(CORNER - math.hypot(CORNER - x, CORNER - y))
    return smooth(colour_at)


def inside_rounded_square(x, y, size, radius):
    cx = min(max(x, radius), size - radius)
    cy = min(max(y, radius), size - radius)
    return math.hypot(x - cx, y - cy) <= radius


def inside_triangle(x, y, a, b, c):
    def side(p, q):
        return (q[0] - p[0]) * (y - p[1]) - (q[1] - p[1]) * (x - p[0])
    s1, s2, s3 = side(a, b), side(b, c), side(c, a)
    return (s1 >= 0 and s2 >= 0 and s3 >= 0) or (s1 <= 0 and s2 <= 0 and s3 <= 0)


def logo_colour(x, y):
    if not inside_rounded_square(x, y, LOGO, 5):
        return WHITE
    glyph = (
        10.5 <= x <= 13.5 and 4 <= y <= 12                              # arrow stem
        or inside_triangle(x, y, (6.5, 11), (17.5, 11), (12, 16.5))     # arrow head
        or 5.5 <= x <= 18.5 and 17.5 <= y <= 19.5                       # tray bottom
        or 5.5 <= x <= 7.5 and 14 <= y <= 19.5                          # tray sides
        or 16.5 <= x <= 18.5 and 14 <= y <= 19.5
    )
    if glyph:
        return WHITE
    # A slight fall of light from the top.
    t = y / LOGO
    return tuple(round(top + (bottom - top) * t) for top, bottom in zip((20, 112, 192), (0, 78, 148)))


def main():
    os.makedirs(ART, exist_ok=True)
    write_bmp("frame_header.bmp", TILE, len(EDGE), lambda x, y: EDGE[y])
    write_bmp("frame_footer.bmp", TILE, len(EDGE), lambda x, y: EDGE[len(EDGE) - 1 - y])
    write_bmp("frame_left.bmp", len(EDGE), TILE, lambda x, y: EDGE[x])
    write_bmp("frame_right.bmp", len(EDGE), TILE, lambda x, y: EDGE[len(EDGE) - 1 - x])
    write_bmp("frame_upper_left.bmp", CORNER, CORNER, corner(False, False))
    write_bmp("frame_upper_right.bmp", CORNER, CORNER, corner(True, False))
    write_bmp("frame_lower_left.bmp", CORNER, CORNER, corner(False, True))
    write_bmp("frame_lower_right.bmp", CORNER, CORNER, corner(True, True))
    write_bmp("logo.bmp", LOGO, LOGO, smooth(logo_colour))


if __name__ == "__main__":
    main()
