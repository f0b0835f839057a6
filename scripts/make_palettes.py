#!/usr/bin/env python3
"""Writes src/viewer/model/palette_tables.h, the six colour maps; with --check it only compares.

Each map runs over 256 levels, t = level / 255, and comes from a published formula:
  1 cubehelix  D. A. Green, "A colour scheme for the display of astronomical intensity images", Bull. Astr. Soc. India
               39 (2011) 289: start 0.5, -1.5 rotations, hue 1, gamma 1. Brightness rises all the way.
  2 heat       black through red, orange and yellow to white: red, green and blue each rise over one third of t.
  3 rainbow    hue from blue (240 degrees) to red (0) at full saturation and value, by A. R. Smith, "Color gamut transform
               pairs", SIGGRAPH 1978.
  4 diverging  blue through light grey to red: K. Moreland, "Diverging color maps for scientific visualization", ISVC
               2009: linear in his Msh space between (59, 76, 192), (221, 221, 221) and (180, 4, 38).
  5 terrain    sea, coast, plain, hills, rock and snow, linear in CIE L*a*b* (CIE 15:2004) between the colours below,
               whose lightness rises all the way.
  6 cyclic     all hues at L* 65 and chroma 38 of CIE L*C*h (CIE 15:2004): for angles, as its ends meet.
CIE colours are of the white D65, sRGB (IEC 61966-2-1).
"""
import colorsys
import math
import pathlib
import sys

OUTPUT = pathlib.Path(__file__).parent.parent / "src/viewer/model/palette_tables.h"
WHITE = (0.95047, 1.0, 1.08883)
TO_XYZ = ((0.4124564, 0.3575761, 0.1804375), (0.2126729, 0.7151522, 0.0721750), (0.0193339, 0.1191920, 0.9503041))
TO_RGB = ((3.2404542, -1.5371385, -0.4985314), (-0.9692660, 1.8760108, 0.0415560), (0.0556434, -0.2040259, 1.0572252))
TERRAIN = ((8, 29, 74), (30, 96, 128), (62, 138, 88), (143, 168, 90), (196, 176, 120), (222, 210, 192), (255, 255, 255))


def product(matrix, vector):
    return [sum(a * b for a, b in zip(row, vector)) for row in matrix]


def lab_of(rgb):
    linear = [v / 12.92 if v <= 0.04045 else ((v + 0.055) / 1.055) ** 2.4 for v in (c / 255 for c in rgb)]
    scaled = [v / w for v, w in zip(product(TO_XYZ, linear), WHITE)]
    x, y, z = (v ** (1 / 3) if v > 216 / 24389 else (24389 / 27 * v + 16) / 116 for v in scaled)
    return 116 * y - 16, 500 * (x - y), 200 * (y - z)


def rgb_of(lab):
    y = (lab[0] + 16) / 116
    roots = y + lab[1] / 500, y, y - lab[2] / 200
    scaled = [v ** 3 if v ** 3 > 216 / 24389 else (116 * v - 16) * 27 / 24389 for v in roots]
    linear = product(TO_RGB, [v * w for v, w in zip(scaled, WHITE)])
    return [12.92 * v if v <= 0.0031308 else 1.055 * v ** (1 / 2.4) - 0.055 for v in linear]


def between(start, end, part):
    return [a + (b - a) * part for a, b in zip(start, end)]


def cubehelix(t):
    angle = 2 * math.pi * (0.5 / 3 + 1 - 1.5 * t)
    amplitude = t * (1 - t) / 2
    cosine, sine = amplitude * math.cos(angle), amplitude * math.sin(angle)
    return t - 0.14861 * cosine + 1.78277 * sine, t - 0.29227 * cosine - 0.90649 * sine, t + 1.97294 * cosine


def heat(t):
    return 3 * t, 3 * t - 1, 3 * t - 2


def rainbow(t):
    return colorsys.hsv_to_rgb((1 - t) * 240 / 360, 1, 1)


def msh_of(rgb):
    lightness, a, b = lab_of(rgb)
    m = math.sqrt(lightness * lightness + a * a + b * b)
    return m, math.acos(lightness / m), math.atan2(b, a)


def hue_towards_grey(msh, grey_m):
    """The hue that a saturated colour turns to on its way to the unsaturated middle."""
    m, s, h = msh
    if m >= grey_m:
        return h
    spin = s * math.sqrt(grey_m * grey_m - m * m) / (m * math.sin(s))
    return h + spin if h > -math.pi / 3 else h - spin


def diverging(t):
    end = msh_of((59, 76, 192)) if t < 0.5 else msh_of((180, 4, 38))
    grey_m = max(88, msh_of((59, 76, 192))[0], msh_of((180, 4, 38))[0])
    m, s, h = between((grey_m, 0, hue_towards_grey(end, grey_m)), end, abs(2 * t - 1))
    return rgb_of((m * math.cos(s), m * math.sin(s) * math.cos(h), m * math.sin(s) * math.sin(h)))


def terrain(t):
    place = t * (len(TERRAIN) - 1)
    knot = min(int(place), len(TERRAIN) - 2)
    return rgb_of(between(lab_of(TERRAIN[knot]), lab_of(TERRAIN[knot + 1]), place - knot))


def cyclic(t):
    angle = 2 * math.pi * t
    return rgb_of((65, 38 * math.cos(angle), 38 * math.sin(angle)))


def table_text():
    lines = ["// The six colour maps, as scripts/make_palettes.py computes them; it names the formulas. Do not edit.",
             "#pragma once", "", "#include <cstdint>", "", "// clang-format off",
             "// Red, green and blue of levels 0 to 255 of palettes 1 to 6.",
             "inline constexpr uint8_t PALETTE_TABLES[6][256][3] = {"]
    for palette in (cubehelix, heat, rainbow, diverging, terrain, cyclic):
        lines.append("    {  // " + palette.__name__)
        triples = []
        for level in range(256):
            rgb = (math.floor(min(1, max(0, v)) * 255 + 0.5) for v in palette(level / 255))
            triples.append("{%d, %d, %d}," % tuple(rgb))
        lines += ["        " + " ".join(triples[i:i + 8]) for i in range(0, 256, 8)] + ["    },"]
    return "\n".join(lines + ["};", "// clang-format on", ""])


def main():
    if sys.argv[1:] != ["--check"]:
        OUTPUT.write_text(table_text(), encoding="utf-8")
        return 0
    return 0 if OUTPUT.read_text(encoding="utf-8") == table_text() else "palette_tables.h differs from its formulas"


if __name__ == "__main__":
    sys.exit(main())
