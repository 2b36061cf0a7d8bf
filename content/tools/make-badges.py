#!/usr/bin/env python3
"""Draws Tarvolin's rank badges.

Writes one SVG per badge to content/badges/svg/ and renders each to a 192x192 PNG with a
transparent background in app/resources/images/badges/:

  badge0.png .. badge41.png     the earned look, in colour
  gbadge0.png .. gbadge40.png   the locked look: the same badge, greyscale and dimmer

Badge N shows the number N. Badges 1..40 climb five tiers of eight:
  1-8 bronze, 9-16 silver, 17-24 gold, 25-32 platinum, 33-40 gems
  (emerald, sapphire, ruby, amethyst: two badges each).
Each tier has its own rim. Inside a tier the first four badges carry one to four stars on the
rim; the last four carry the same stars plus a laurel wreath. Badge 0 is a plain wooden
starting badge with a sprout; badge 41 is a diamond badge with a crown.

The numerals are drawn as strokes by this script (no font is used), so the SVG files render
the same everywhere.

Usage: python3 content/tools/make-badges.py [--svg-only] [--renderer PATH]
Needs rsvg-convert (Debian package librsvg2-bin) to render the PNG files.
Standard library only.
"""

import argparse
import math
import os
import shutil
import subprocess
import sys

SIZE = 192
CX, CY = 96.0, 98.0    # centre of the medallion
R_RIM = 64.0           # outer radius of the round rim
R_FACE = 51.0          # radius of the enamel face

HERE = os.path.dirname(os.path.abspath(__file__))
CONTENT = os.path.dirname(HERE)
REPO = os.path.dirname(CONTENT)
SVG_DIR = os.path.join(CONTENT, "badges", "svg")
PNG_DIR = os.path.join(REPO, "app", "resources", "images", "badges")

TOP_BADGE = 41      # badges 1..40 are the ranks; 0 is the start, 41 the crown
LOCKED_LAST = 40   # gbadge0 .. gbadge40


# --------------------------------------------------------------------------- colour

def hex_to_rgb(h):
    h = h.lstrip("#")
    return tuple(int(h[i:i + 2], 16) / 255.0 for i in (0, 2, 4))


def rgb_to_hex(rgb):
    return "#%02x%02x%02x" % tuple(max(0, min(255, int(round(c * 255)))) for c in rgb)


def mix(a, b, t):
    ra, rb = hex_to_rgb(a), hex_to_rgb(b)
    return rgb_to_hex(tuple(x + (y - x) * t for x, y in zip(ra, rb)))


class Palette:
    """Maps every colour of a drawing; the locked look turns it grey and dimmer."""

    def __init__(self, locked):
        self.locked = locked

    def __call__(self, h):
        if not self.locked:
            return h
        r, g, b = hex_to_rgb(h)
        lum = 0.2126 * r + 0.7152 * g + 0.0722 * b
        # flatten the contrast a little and darken: a dull, unlit version of the badge
        v = 0.14 + lum * 0.55
        return rgb_to_hex((v, v, v * 1.03))


# --------------------------------------------------------------------------- geometry

def fmt(v):
    s = "%.2f" % v
    s = s.rstrip("0").rstrip(".")
    return "0" if s == "-0" else s


def poly_path(points, close=True):
    d = "M" + " L".join("%s,%s" % (fmt(x), fmt(y)) for x, y in points)
    return d + (" Z" if close else "")


def circle_points(cx, cy, r, n=180, radius_fn=None):
    pts = []
    for i in range(n):
        a = 2 * math.pi * i / n
        rr = radius_fn(a) if radius_fn else r
        pts.append((cx + rr * math.cos(a), cy + rr * math.sin(a)))
    return pts


def star_points(cx, cy, r_out, r_in, n, rot=-math.pi / 2):
    pts = []
    for i in range(2 * n):
        a = rot + math.pi * i / n
        r = r_out if i % 2 == 0 else r_in
        pts.append((cx + r * math.cos(a), cy + r * math.sin(a)))
    return pts


def polar(r, deg, cx=CX, cy=CY):
    a = math.radians(deg)
    return cx + r * math.cos(a), cy + r * math.sin(a)


# --------------------------------------------------------------------------- numerals
# Each digit is a centre line in a 40 x 64 box, drawn with a thick round stroke.

DIGITS = {
    "0": (40, "M20,0 C31.5,0 40,9.5 40,23 V41 C40,54.5 31.5,64 20,64 "
              "C8.5,64 0,54.5 0,41 V23 C0,9.5 8.5,0 20,0 Z"),
    "1": (24, "M3,13 L19,0 V64"),
    "2": (40, "M1,16 C2,6 10,0 20,0 C31,0 39,7 39,17 C39,28 31,34 21,42 L1,64 H40"),
    "3": (40, "M2,8 C6,3 12,0 20,0 C30,0 37,6 37,15 C37,24 30,30 18,30 "
              "M18,30 C31,30 40,37 40,47 C40,57 31,64 20,64 C11,64 4,60 0,54"),
    "4": (40, "M30,64 V0 L0,44 H40"),
    "5": (40, "M37,0 H7 L4,28 C9,24.5 14,23 20,23 C31.5,23 40,31.5 40,43.5 "
              "C40,55.5 31.5,64 20,64 C11,64 4.5,60 0,54"),
    "6": (40, "M34,4 C29,1 25,0 21,0 C8,0 0,14 0,42 "
              "M0,43 A20,21 0 1 0 40,43 A20,21 0 1 0 0,43 Z"),
    "7": (40, "M0,0 H40 L15,64"),
    "8": (40, "M20,0 A14.5,14.5 0 1 1 20,29 A14.5,14.5 0 1 1 20,0 Z "
              "M20,28 A18,18 0 1 1 20,64 A18,18 0 1 1 20,28 Z"),
    "9": (40, "M6,60 C11,63 15,64 19,64 C32,64 40,50 40,22 "
              "M40,21 A20,21 0 1 0 0,21 A20,21 0 1 0 40,21 Z"),
}
DIGIT_GAP = 7.0
DIGIT_STROKE = 11.5


def numeral(text, cx, cy, height, outline, pal, gloss=True):
    """Returns SVG for the number, centred on (cx, cy), `height` px tall (centre lines).

    The body is filled with the gradient #numfill and edged with `outline`; `gloss` adds a
    thin light line along the strokes."""
    s = height / 64.0
    widths = [DIGITS[ch][0] for ch in text]
    total = sum(widths) + DIGIT_GAP * (len(text) - 1)
    x = -total / 2.0
    paths = []
    for ch, w in zip(text, widths):
        paths.append('<path transform="translate(%s,0)" d="%s"/>' % (fmt(x), DIGITS[ch][1]))
        x += w + DIGIT_GAP
    body = "".join(paths)
    base = 'transform="translate(%s,%s) scale(%s) translate(0,-32)"' % (fmt(cx), fmt(cy), fmt(s))
    out = []
    # a soft drop under the number, the dark outline, the light body, a thin shade line
    out.append('<g %s fill="none" stroke-linecap="round" stroke-linejoin="round">' % base)
    out.append('<g transform="translate(0,2.2)" stroke="%s" stroke-opacity="0.45" '
               'stroke-width="%s">%s</g>' % (pal("#000000"), fmt(DIGIT_STROKE + 8), body))
    out.append('<g stroke="%s" stroke-width="%s">%s</g>' % (outline, fmt(DIGIT_STROKE + 7), body))
    out.append('<g stroke="url(#numfill)" stroke-width="%s">%s</g>' % (fmt(DIGIT_STROKE), body))
    if gloss:
        out.append('<g transform="translate(-0.8,-2.2)" stroke="%s" stroke-opacity="0.5" '
                   'stroke-width="%s">%s</g>' % (pal("#ffffff"), fmt(DIGIT_STROKE * 0.22), body))
    out.append('</g>')
    return "".join(out)


# --------------------------------------------------------------------------- tiers

class Tier:
    def __init__(self, name, metal, enamel, number, rim, gem=None):
        self.name = name
        self.metal = metal     # (highlight, light, mid, dark, edge)
        self.enamel = enamel   # (light, dark)
        self.number = number   # (top, bottom, outline)
        self.rim = rim
        self.gem = gem


BRONZE = Tier("bronze",
              ("#fde2c0", "#e6a46a", "#b86b34", "#7a3f17", "#3f1e08"),
              ("#7d3a1c", "#3b170a"),
              ("#fff3e2", "#f2c08e", "#2a0f03"),
              "beaded")
SILVER = Tier("silver",
              ("#ffffff", "#e3e9f0", "#a9b4c2", "#6b7788", "#2e3540"),
              ("#2f5d9c", "#142a52"),
              ("#ffffff", "#d4e0f0", "#0b1a36"),
              "scalloped")
GOLD = Tier("gold",
            ("#fff8d0", "#ffd95a", "#e0a31c", "#a0650a", "#4d2c00"),
            ("#b3182f", "#560714"),
            ("#fffbe6", "#ffd866", "#3a0208"),
            "sunburst")
PLATINUM = Tier("platinum",
                ("#ffffff", "#e9f1f5", "#b8cad3", "#7d95a3", "#34454f"),
                ("#177c7a", "#07363d"),
                ("#ffffff", "#d8f4f2", "#022427"),
                "order")

GEMS = [
    ("emerald", "#3ee08a", "#0a8a4a", "#03381c"),
    ("sapphire", "#5aa8ff", "#1446c8", "#071a55"),
    ("ruby", "#ff5a7a", "#c0102e", "#4d0010"),
    ("amethyst", "#d58bff", "#7a24c8", "#2e0a55"),
]
WHITE_GOLD = ("#ffffff", "#f4f1ea", "#cfc8b8", "#8f8672", "#3d372a")


def gem_tier(name, light, mid, dark):
    return Tier(name, WHITE_GOLD, (light, dark), ("#ffffff", mix(light, "#ffffff", 0.7), dark),
                "gem", gem=(light, mid, dark))


def tier_of(n):
    if n <= 8:
        return BRONZE
    if n <= 16:
        return SILVER
    if n <= 24:
        return GOLD
    if n <= 32:
        return PLATINUM
    g = GEMS[(n - 33) // 2]
    return gem_tier(g[0], g[1], g[2], g[3])


# --------------------------------------------------------------------------- parts

def defs_metal(pal, metal, prefix):
    hi, li, mi, dk, ed = (pal(c) for c in metal)
    return (
        '<linearGradient id="%s" x1="0.15" y1="0" x2="0.85" y2="1">'
        '<stop offset="0" stop-color="%s"/><stop offset="0.28" stop-color="%s"/>'
        '<stop offset="0.55" stop-color="%s"/><stop offset="0.8" stop-color="%s"/>'
        '<stop offset="1" stop-color="%s"/></linearGradient>'
        '<linearGradient id="%sR" x1="0.85" y1="1" x2="0.15" y2="0">'
        '<stop offset="0" stop-color="%s"/><stop offset="0.35" stop-color="%s"/>'
        '<stop offset="0.75" stop-color="%s"/><stop offset="1" stop-color="%s"/></linearGradient>'
        % (prefix, hi, li, mi, dk, dk, prefix, li, mi, dk, ed))


def shadow(pal, rx=60, ry=9, cy=CY + 75):
    return ('<ellipse cx="%s" cy="%s" rx="%s" ry="%s" fill="url(#shadow)"/>'
            % (fmt(CX), fmt(cy), fmt(rx), fmt(ry)))


def rim_shape(kind, pal):
    """The outer silhouette of the medallion behind the round rim."""
    edge = pal("#000000")
    parts = []
    if kind == "scalloped":
        pts = circle_points(CX, CY, 0, n=288,
                            radius_fn=lambda a: R_RIM + 2.5 + 3.2 * abs(math.cos(8 * a)))
        parts.append('<path d="%s" fill="url(#metal)" stroke="%s" stroke-opacity="0.55" '
                     'stroke-width="1.6" stroke-linejoin="round"/>' % (poly_path(pts), edge))
    elif kind == "sunburst":
        pts = star_points(CX, CY, R_RIM + 9, R_RIM + 1, 24, rot=-math.pi / 2 + math.pi / 24)
        parts.append('<path d="%s" fill="url(#metal)" stroke="%s" stroke-opacity="0.55" '
                     'stroke-width="1.6" stroke-linejoin="round"/>' % (poly_path(pts), edge))
    elif kind == "order":
        # eight broad rays, each split in a light and a dark half
        n = 8
        r_out, r_in = R_RIM + 16, R_RIM - 8
        rot = -math.pi / 2
        pts = star_points(CX, CY, r_out, r_in, n, rot=rot)
        parts.append('<path d="%s" fill="url(#metalR)" stroke="%s" stroke-opacity="0.6" '
                     'stroke-width="1.6" stroke-linejoin="round"/>' % (poly_path(pts), edge))
        for i in range(n):
            a = rot + 2 * math.pi * i / n
            tip = (CX + r_out * math.cos(a), CY + r_out * math.sin(a))
            a2 = a + math.pi / n
            side = (CX + r_in * math.cos(a2), CY + r_in * math.sin(a2))
            parts.append('<path d="%s" fill="%s" fill-opacity="0.55"/>'
                         % (poly_path([(CX, CY), tip, side]), pal("#ffffff")))
    elif kind == "gem":
        # an octagonal cut stone in a white-gold setting
        pts = [polar(R_RIM + 9, -90 + 22.5 + 45 * i) for i in range(8)]
        parts.append('<path d="%s" fill="url(#metal)" stroke="%s" stroke-opacity="0.6" '
                     'stroke-width="1.6" stroke-linejoin="round"/>' % (poly_path(pts), edge))
    return "".join(parts)


def round_rim(pal, tier, beaded=False):
    edge = pal("#000000")
    parts = [
        '<circle cx="%s" cy="%s" r="%s" fill="url(#metal)" stroke="%s" stroke-opacity="0.6" '
        'stroke-width="1.6"/>' % (fmt(CX), fmt(CY), fmt(R_RIM), edge),
        '<circle cx="%s" cy="%s" r="%s" fill="none" stroke="%s" stroke-opacity="0.5" '
        'stroke-width="1.2"/>' % (fmt(CX), fmt(CY), fmt(R_RIM - 2.2), pal("#ffffff")),
        '<circle cx="%s" cy="%s" r="%s" fill="url(#metalR)"/>'
        % (fmt(CX), fmt(CY), fmt(R_FACE + 5)),
    ]
    if beaded:
        r = (R_RIM + R_FACE + 5) / 2.0
        for i in range(32):
            x, y = polar(r, 360.0 * i / 32)
            parts.append('<circle cx="%s" cy="%s" r="1.9" fill="%s" fill-opacity="0.75"/>'
                         % (fmt(x), fmt(y), pal(tier.metal[3])))
            parts.append('<circle cx="%s" cy="%s" r="0.9" fill="%s" fill-opacity="0.8"/>'
                         % (fmt(x - 0.5), fmt(y - 0.6), pal(tier.metal[0])))
    return "".join(parts)


def face(pal, tier):
    edge = pal("#000000")
    out = []
    if tier.gem:
        light, mid, dark = (pal(c) for c in tier.gem)
        # octagonal table with facets in shades of the stone
        outer = [polar(R_FACE + 3, -90 + 22.5 + 45 * i) for i in range(8)]
        inner = [polar(R_FACE - 13, -90 + 22.5 + 45 * i) for i in range(8)]
        shades = [0.15, 0.0, 0.35, 0.6, 0.75, 0.55, 0.3, 0.05]
        for i in range(8):
            j = (i + 1) % 8
            t = shades[i]
            col = mix(light, dark, t) if not pal.locked else pal(mix(tier.gem[0], tier.gem[2], t))
            out.append('<path d="%s" fill="%s"/>'
                       % (poly_path([outer[i], outer[j], inner[j], inner[i]]), col))
        out.append('<path d="%s" fill="url(#enamel)"/>' % poly_path(inner))
        out.append('<path d="%s" fill="none" stroke="%s" stroke-opacity="0.35" stroke-width="0.8"/>'
                   % (poly_path(inner), pal("#ffffff")))
        for i in range(8):
            out.append('<path d="M%s,%s L%s,%s" stroke="%s" stroke-opacity="0.3" '
                       'stroke-width="0.8"/>' % (fmt(outer[i][0]), fmt(outer[i][1]),
                                                 fmt(inner[i][0]), fmt(inner[i][1]),
                                                 pal("#ffffff")))
        out.append('<path d="%s" fill="none" stroke="%s" stroke-opacity="0.55" stroke-width="1.4" '
                   'stroke-linejoin="round"/>' % (poly_path(outer), edge))
        # sparkle on the upper left facet
        sx, sy = polar(R_FACE - 5, -140)
        out.append(sparkle(sx, sy, 5.5, pal))
        return "".join(out)
    out.append('<circle cx="%s" cy="%s" r="%s" fill="url(#enamel)" stroke="%s" '
               'stroke-opacity="0.5" stroke-width="1.4"/>'
               % (fmt(CX), fmt(CY), fmt(R_FACE), edge))
    # a gentle sheen over the upper half of the face
    out.append('<path d="M%s,%s A%s,%s 0 0 1 %s,%s C%s,%s %s,%s %s,%s Z" fill="%s" '
               'fill-opacity="0.13"/>'
               % (fmt(CX - R_FACE + 4), fmt(CY - 4), fmt(R_FACE - 4), fmt(R_FACE - 4),
                  fmt(CX + R_FACE - 4), fmt(CY - 4),
                  fmt(CX + 20), fmt(CY - 18), fmt(CX - 20), fmt(CY - 18),
                  fmt(CX - R_FACE + 4), fmt(CY - 4), pal("#ffffff")))
    return "".join(out)


def sparkle(x, y, r, pal):
    pts = star_points(x, y, r, r * 0.22, 4, rot=-math.pi / 2)
    return '<path d="%s" fill="%s" fill-opacity="0.9"/>' % (poly_path(pts), pal("#ffffff"))


def star(x, y, r, outline):
    pts = star_points(x, y, r, r * 0.45, 5)
    d = poly_path(pts)
    return ('<path d="%s" fill="%s" stroke="%s" stroke-width="4.2" stroke-linejoin="round"/>'
            '<path d="%s" fill="url(#starfill)"/>'
            % (d, outline, outline, d))


def stars(count, pal, tier):
    if count <= 0:
        return ""
    r = 12.5 if count < 4 else 11.8
    step = 24.0 if count < 4 else 22.5
    ring = R_RIM + 1
    out = []
    for i in range(count):
        deg = -90 + (i - (count - 1) / 2.0) * step
        x, y = polar(ring, deg)
        out.append(star(x, y, r, pal(tier.number[2])))
    return "".join(out)


def laurel(pal, tier, leaves=5, grad="metal", ring=R_RIM + 10.0, metal=None):
    """Two laurel branches around the lower half of the medallion."""
    metal = metal or tier.metal
    edge = pal(metal[4])
    out = []
    start, end = 98.0, 212.0   # degrees, measured clockwise from +x (90 = straight down)
    for side in (1, -1):       # 1: the left branch, -1: the right one

        def at(deg, r=ring):
            return polar(r, deg if side == 1 else 180 - deg)

        def up(deg):
            # direction of the stem towards its tip, in degrees
            d = deg if side == 1 else 180 - deg
            return d + 90 if side == 1 else d - 90

        pts = [at(start + (end - 6 - start) * k / 24.0) for k in range(25)]
        stem = poly_path(pts, close=False)
        out.append('<path d="%s" fill="none" stroke="%s" stroke-width="5.6" '
                   'stroke-linecap="round"/>' % (stem, edge))
        out.append('<path d="%s" fill="none" stroke="url(#%s)" stroke-width="3" '
                   'stroke-linecap="round"/>' % (stem, grad))
        for k in range(leaves):
            t = k / (leaves - 1.0)
            size = 1.0 - 0.28 * t
            for lr in (1, -1):   # 1: outer leaf, -1: inner leaf
                deg = start + 8 + (end - start - 22) * t + (5 if lr == -1 else 0)
                bx, by = at(deg)
                tilt = 38 * lr * (-1 if side == 1 else 1)
                ang = up(deg) + tilt
                length, width = 16.0 * size, 6.6 * size
                a = math.radians(ang)
                cx, cy = bx + math.cos(a) * length * 0.48, by + math.sin(a) * length * 0.48
                out.append(leaf(cx, cy, length, width, ang, grad, edge))
        # one leaf at the tip, along the stem
        deg = end - 8
        bx, by = at(deg)
        a = math.radians(up(deg))
        length, width = 14.0, 5.8
        out.append(leaf(bx + math.cos(a) * length * 0.45, by + math.sin(a) * length * 0.45,
                        length, width, up(deg), grad, edge))
    # a ribbon knot at the bottom
    bx, by = polar(ring - 1, 90)
    out.append('<path d="M%s,%s l-9,11 l5.5,0 l3.5,-4.5 Z M%s,%s l9,11 l-5.5,0 l-3.5,-4.5 Z" '
               'fill="%s" stroke="%s" stroke-width="1.3" stroke-linejoin="round"/>'
               % (fmt(bx - 1), fmt(by), fmt(bx + 1), fmt(by), pal(tier.enamel[0]),
                  pal(tier.enamel[1])))
    out.append('<circle cx="%s" cy="%s" r="4.6" fill="url(#%s)" stroke="%s" '
               'stroke-width="1.3"/>' % (fmt(bx), fmt(by), grad, edge))
    return "".join(out)


def leaf(x, y, length, width, deg, grad, edge):
    """A leaf centred on (x, y), its tip pointing along deg; the base is the rounder end."""
    h = length / 2.0
    d = ("M%s,0 C%s,%s %s,%s %s,0 C%s,%s %s,%s %s,0 Z"
         % (fmt(-h), fmt(-h * 0.6), fmt(-width * 1.05), fmt(h * 0.35), fmt(-width * 0.95),
            fmt(h), fmt(h * 0.35), fmt(width * 0.95), fmt(-h * 0.6), fmt(width * 1.05),
            fmt(-h)))
    return ('<path transform="translate(%s,%s) rotate(%s)" d="%s" fill="url(#%s)" '
            'stroke="%s" stroke-width="1.2" stroke-linejoin="round"/>'
            % (fmt(x), fmt(y), fmt(deg), d, grad, edge))


def sprout(pal, x, y):
    """A small green sprout standing on the top of the starting badge."""
    stem = pal("#3f7d1f")
    out = ['<path d="M%s,%s C%s,%s %s,%s %s,%s" fill="none" stroke="%s" stroke-width="4.6" '
           'stroke-linecap="round"/>' % (fmt(x), fmt(y + 6), fmt(x), fmt(y - 2), fmt(x + 1),
                                         fmt(y - 8), fmt(x + 1), fmt(y - 13), pal("#1f3d0c")),
           '<path d="M%s,%s C%s,%s %s,%s %s,%s" fill="none" stroke="%s" stroke-width="2.6" '
           'stroke-linecap="round"/>' % (fmt(x), fmt(y + 6), fmt(x), fmt(y - 2), fmt(x + 1),
                                         fmt(y - 8), fmt(x + 1), fmt(y - 13), stem)]
    for side in (-1, 1):
        lx = x + 1 + side * 11
        ly = y - 18
        d = ("M%s,%s C%s,%s %s,%s %s,%s C%s,%s %s,%s %s,%s Z"
             % (fmt(x + 1), fmt(y - 12),
                fmt(x + 1 + side * 2), fmt(y - 24), fmt(lx + side * 8), fmt(ly - 6), fmt(lx + side * 9), fmt(ly - 4),
                fmt(lx + side * 6), fmt(ly + 8), fmt(x + 1 + side * 4), fmt(y - 8), fmt(x + 1), fmt(y - 12)))
        out.append('<path d="%s" fill="url(#leafgreen)" stroke="%s" stroke-width="1.8" '
                   'stroke-linejoin="round"/>' % (d, pal("#1f3d0c")))
        out.append('<path d="M%s,%s Q%s,%s %s,%s" fill="none" stroke="%s" stroke-opacity="0.6" '
                   'stroke-width="1.1" stroke-linecap="round"/>'
                   % (fmt(x + 1 + side * 2), fmt(y - 13), fmt(lx), fmt(ly - 2), fmt(lx + side * 7),
                      fmt(ly - 3), pal("#e9ffd0")))
    return "".join(out)


def crown(pal, x, y, w=64, h=36):
    """A crown with five spikes, its band standing on (x, y)."""
    gold_edge = pal("#4d2c00")
    l, r = x - w / 2, x + w / 2
    top = y - h
    band_h = 9
    # five spikes, the middle one the tallest
    pts = [(l, y - band_h + 1), (l - 4, top + 8), (l + w * 0.19, y - h * 0.42),
           (x - w * 0.2, top + 1), (x - w * 0.07, y - h * 0.5), (x, top - 7),
           (x + w * 0.07, y - h * 0.5), (x + w * 0.2, top + 1), (r - w * 0.19, y - h * 0.42),
           (r + 4, top + 8), (r, y - band_h + 1)]
    out = ['<path d="%s" fill="url(#crown)" stroke="%s" stroke-width="2.6" '
           'stroke-linejoin="round"/>' % (poly_path(pts), gold_edge)]
    out.append('<rect x="%s" y="%s" width="%s" height="%s" rx="3" fill="url(#crown)" stroke="%s" '
               'stroke-width="2.6"/>' % (fmt(l - 2), fmt(y - band_h), fmt(w + 4), fmt(band_h),
                                         gold_edge))
    # pearls on the tips, jewels on the band
    for px, py in [(l - 4, top + 8), (x - w * 0.2, top + 1), (x, top - 7), (x + w * 0.2, top + 1),
                   (r + 4, top + 8)]:
        out.append('<circle cx="%s" cy="%s" r="3.6" fill="%s" stroke="%s" stroke-width="1.4"/>'
                   % (fmt(px), fmt(py), pal("#fffdf3"), gold_edge))
    for i, col in enumerate(["#1a7de0", "#e0203f", "#1a7de0"]):
        jx = x + (i - 1) * w * 0.3
        out.append('<circle cx="%s" cy="%s" r="3.2" fill="%s" stroke="%s" stroke-width="1.1"/>'
                   % (fmt(jx), fmt(y - band_h / 2), pal(col), gold_edge))
    out.append('<path d="M%s,%s H%s" stroke="%s" stroke-opacity="0.7" stroke-width="1.4" '
               'stroke-linecap="round"/>' % (fmt(l + 2), fmt(y - band_h + 2.4), fmt(r - 2),
                                             pal("#ffffff")))
    return "".join(out)


# --------------------------------------------------------------------------- badges

def common_defs(pal, tier):
    enamel_l, enamel_d = (pal(c) for c in tier.enamel)
    top, bottom, _ = (pal(c) for c in tier.number)
    return (
        '<radialGradient id="shadow"><stop offset="0" stop-color="%s" stop-opacity="0.42"/>'
        '<stop offset="1" stop-color="%s" stop-opacity="0"/></radialGradient>'
        '<radialGradient id="enamel" cx="0.42" cy="0.32" r="0.78">'
        '<stop offset="0" stop-color="%s"/><stop offset="1" stop-color="%s"/></radialGradient>'
        '<linearGradient id="numfill" x1="0" y1="0" x2="0" y2="1">'
        '<stop offset="0" stop-color="%s"/><stop offset="1" stop-color="%s"/></linearGradient>'
        '<linearGradient id="starfill" x1="0" y1="0" x2="0.4" y2="1">'
        '<stop offset="0" stop-color="%s"/><stop offset="0.5" stop-color="%s"/>'
        '<stop offset="1" stop-color="%s"/></linearGradient>'
        % (pal("#000000"), pal("#000000"), enamel_l, enamel_d, top, bottom,
           pal("#fffbe8"), pal("#ffd84a"), pal("#e89a10"))
        + defs_metal(pal, tier.metal, "metal"))


def wrap(defs, body, title):
    return ('<?xml version="1.0" encoding="UTF-8"?>\n'
            '<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" viewBox="0 0 %d %d">\n'
            '<title>%s</title>\n<defs>%s</defs>\n%s\n</svg>\n'
            % (SIZE, SIZE, SIZE, SIZE, title, defs, body))


def rank_badge(n, pal):
    tier = tier_of(n)
    p = (n - 1) % 8 + 1          # place inside the tier, 1..8
    count = (p - 1) % 4 + 1      # stars
    wreath = p > 4
    body = [shadow(pal)]
    if tier.rim == "gem":
        # the stone's setting is its rim: a golden wreath goes behind it
        if wreath:
            body.append(laurel(pal, tier, grad="laurelgold", ring=R_RIM + 13.0,
                               metal=GOLD.metal))
        body.append(rim_shape(tier.rim, pal))
    else:
        # the wreath lies over the outer edge (rays, scallops) and under the round rim
        body.append(rim_shape(tier.rim, pal))
        if wreath:
            body.append(laurel(pal, tier))
        body.append(round_rim(pal, tier, beaded=(tier.rim == "beaded")))
    body.append(face(pal, tier))
    body.append(numeral(str(n), CX, CY + 1, 50 if n < 10 else 47, pal(tier.number[2]), pal))
    body.append(stars(count, pal, tier))
    defs = common_defs(pal, tier)
    if tier.gem and wreath:
        defs += defs_metal(pal, GOLD.metal, "laurelgold")
    return wrap(defs, "".join(body), "%s %d" % (tier.name, n))


START = Tier("wood",
             ("#f3d9a8", "#cf9c5c", "#9c6a35", "#6b4420", "#3a230d"),
             ("#f8ecd0", "#dcc59a"),
             ("#8a5a2b", "#5c3614", "#fff6e0"),
             "plain")


def start_badge(pal):
    tier = START
    body = [shadow(pal, rx=54)]
    body.append(round_rim(pal, tier))
    # wood grain rings on the rim
    for i, r in enumerate((R_RIM - 4.5, R_RIM - 8.0)):
        body.append('<circle cx="%s" cy="%s" r="%s" fill="none" stroke="%s" stroke-opacity="0.35" '
                    'stroke-width="0.9" stroke-dasharray="%s"/>'
                    % (fmt(CX), fmt(CY), fmt(r), pal(tier.metal[3]), "22 7 9 5" if i else "14 6 30 4"))
    body.append(face(pal, tier))
    # on the light parchment face the number is dark with a light outline
    body.append(numeral("0", CX, CY + 1, 50, pal("#fff6e0"), pal, gloss=False))
    body.append(sprout(pal, CX - 1, CY - R_RIM + 4))
    defs = common_defs(pal, tier) + (
        '<linearGradient id="leafgreen" x1="0" y1="0" x2="0" y2="1">'
        '<stop offset="0" stop-color="%s"/><stop offset="1" stop-color="%s"/></linearGradient>'
        % (pal("#9be35a"), pal("#3f9a24")))
    return wrap(defs, "".join(body), "start 0")


def top_badge(pal):
    light, mid, dark = "#eaf8ff", "#8fd3ff", "#1d5fa8"
    tier = Tier("diamond", WHITE_GOLD, ("#3a9bf0", "#0b2a66"),
                ("#ffffff", "#fff2b0", "#0a1e4d"), "gem", gem=(light, mid, dark))
    gold = GOLD
    body = [shadow(pal, rx=64)]
    # a glory of light rays behind the stone, then a golden wreath
    rays = star_points(CX, CY, R_RIM + 25, R_RIM - 6, 16, rot=-math.pi / 2 + math.pi / 16)
    body.append('<path d="%s" fill="url(#glory)" stroke="%s" stroke-opacity="0.55" '
                'stroke-width="1.4" stroke-linejoin="round"/>' % (poly_path(rays), pal("#1d3f6e")))
    body.append(laurel(pal, gold, leaves=6, grad="laurelgold", ring=R_RIM + 13.0))
    body.append(rim_shape("gem", pal))
    body.append(face(pal, tier))
    # rainbow glints on the facets
    for deg, col in ((-60, "#ff8fb1"), (20, "#ffe27a"), (160, "#9dffcf")):
        x, y = polar(R_FACE - 5, deg)
        body.append('<circle cx="%s" cy="%s" r="3" fill="%s" fill-opacity="0.8"/>'
                    % (fmt(x), fmt(y), pal(col)))
    body.append(numeral("41", CX, CY + 1, 47, pal(tier.number[2]), pal))
    body.append(crown(pal, CX, CY - R_RIM + 12, w=68, h=30))
    defs = common_defs(pal, tier)
    defs += ('<linearGradient id="crown" x1="0" y1="0" x2="0.6" y2="1">'
             '<stop offset="0" stop-color="%s"/><stop offset="0.45" stop-color="%s"/>'
             '<stop offset="1" stop-color="%s"/></linearGradient>'
             % (pal("#fff3b0"), pal("#ffc933"), pal("#c47a06")))
    defs += ('<radialGradient id="glory" cx="0.5" cy="0.5" r="0.5">'
             '<stop offset="0.62" stop-color="%s"/><stop offset="0.8" stop-color="%s"/>'
             '<stop offset="1" stop-color="%s"/></radialGradient>'
             % (pal("#ffffff"), pal("#9fd2ff"), pal("#3d8fe0")))
    # the laurel of the top badge is gold: give it its own gradient name
    body_s = "".join(body)
    return wrap(defs + defs_metal(pal, gold.metal, "laurelgold"),
                body_s, "crown 41")


def badge_svg(n, locked):
    pal = Palette(locked)
    if n == 0:
        return start_badge(pal)
    if n == TOP_BADGE:
        return top_badge(pal)
    return rank_badge(n, pal)


# --------------------------------------------------------------------------- main

def render(renderer, svg_path, png_path):
    subprocess.run([renderer, "--width", str(SIZE), "--height", str(SIZE), "--format", "png",
                    "--output", png_path, svg_path], check=True)


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("--svg-only", action="store_true", help="write the SVG files, render nothing")
    ap.add_argument("--renderer", default=shutil.which("rsvg-convert") or "rsvg-convert",
                    help="path of rsvg-convert")
    args = ap.parse_args()

    os.makedirs(SVG_DIR, exist_ok=True)
    jobs = []
    for n in range(0, TOP_BADGE + 1):
        jobs.append(("badge%d" % n, n, False))
    for n in range(0, LOCKED_LAST + 1):
        jobs.append(("gbadge%d" % n, n, True))
    for name, n, locked in jobs:
        with open(os.path.join(SVG_DIR, name + ".svg"), "w", encoding="utf-8") as f:
            f.write(badge_svg(n, locked))
    print("wrote %d SVG files to %s" % (len(jobs), os.path.relpath(SVG_DIR, REPO)))
    if args.svg_only:
        return 0
    if not shutil.which(args.renderer) and not os.path.exists(args.renderer):
        sys.exit("rsvg-convert not found: apt-get install librsvg2-bin")
    os.makedirs(PNG_DIR, exist_ok=True)
    for name, _, _ in jobs:
        render(args.renderer, os.path.join(SVG_DIR, name + ".svg"),
               os.path.join(PNG_DIR, name + ".png"))
    print("rendered %d PNG files to %s" % (len(jobs), os.path.relpath(PNG_DIR, REPO)))
    return 0


if __name__ == "__main__":
    sys.exit(main())
