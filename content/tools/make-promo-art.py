#!/usr/bin/env python3
"""Draws the icons and promotion pictures of the maker's other games (app/resources/images/promo).

Every picture is made here from simple shapes, so the game owes nobody for them; they are released with the
game's own code. Run from the repository's root: python3 content/tools/make-promo-art.py
"""
import json
import os

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
OUT = os.path.join(ROOT, "app", "resources", "images", "promo")

# stem: (background, accent, motif)
GAMES = {
    "countries": ("#1f6f8b", "#f2c14e", "globe"),
    "sounds": ("#6a4c93", "#ffca3a", "wave"),
    "riddles": ("#2d6a4f", "#f4a261", "question"),
    "zoomed": ("#264653", "#e9c46a", "lens"),
    "sentences": ("#9d4edd", "#ffd166", "lines"),
    "scramble": ("#e76f51", "#fefae0", "tiles"),
    "cities": ("#3a506b", "#ffb703", "towers"),
    "clubs": ("#1b4332", "#ffffff", "ball"),
}


def motif(kind, cx, cy, r, colour):
    if kind == "globe":
        return (f'<circle cx="{cx}" cy="{cy}" r="{r}" fill="none" stroke="{colour}" stroke-width="{r*0.12:.1f}"/>'
                f'<ellipse cx="{cx}" cy="{cy}" rx="{r*0.45:.1f}" ry="{r}" fill="none" stroke="{colour}" stroke-width="{r*0.08:.1f}"/>'
                f'<line x1="{cx-r}" y1="{cy}" x2="{cx+r}" y2="{cy}" stroke="{colour}" stroke-width="{r*0.08:.1f}"/>')
    if kind == "wave":
        bars = []
        for i, h in enumerate([0.4, 0.8, 1.0, 0.6, 0.9, 0.5, 0.3]):
            x = cx - r + i * (2 * r / 6)
            bars.append(f'<rect x="{x-r*0.08:.1f}" y="{cy-r*h:.1f}" width="{r*0.16:.1f}" height="{2*r*h:.1f}" rx="{r*0.08:.1f}" fill="{colour}"/>')
        return "".join(bars)
    if kind == "question":
        return (f'<circle cx="{cx}" cy="{cy}" r="{r}" fill="{colour}"/>'
                f'<path d="M{cx-r*0.35:.1f} {cy-r*0.3:.1f} q0 -{r*0.45:.1f} {r*0.35:.1f} -{r*0.45:.1f} q{r*0.38:.1f} 0 {r*0.38:.1f} {r*0.38:.1f} q0 {r*0.25:.1f} -{r*0.3:.1f} {r*0.4:.1f} v{r*0.2:.1f}" fill="none" stroke="#ffffff" stroke-width="{r*0.16:.1f}" stroke-linecap="round"/>'
                f'<circle cx="{cx}" cy="{cy+r*0.62:.1f}" r="{r*0.1:.1f}" fill="#ffffff"/>')
    if kind == "lens":
        return (f'<circle cx="{cx-r*0.15:.1f}" cy="{cy-r*0.15:.1f}" r="{r*0.6:.1f}" fill="none" stroke="{colour}" stroke-width="{r*0.16:.1f}"/>'
                f'<line x1="{cx+r*0.3:.1f}" y1="{cy+r*0.3:.1f}" x2="{cx+r*0.85:.1f}" y2="{cy+r*0.85:.1f}" stroke="{colour}" stroke-width="{r*0.22:.1f}" stroke-linecap="round"/>')
    if kind == "lines":
        return "".join(f'<rect x="{cx-r:.1f}" y="{cy-r*0.7+i*r*0.5:.1f}" width="{2*r*(1.0 if i != 2 else 0.6):.1f}" height="{r*0.2:.1f}" rx="{r*0.1:.1f}" fill="{colour}"/>' for i in range(4))
    if kind == "tiles":
        out = []
        for i in range(3):
            x = cx - r + i * r * 0.7
            out.append(f'<rect x="{x:.1f}" y="{cy-r*0.3+(i%2)*r*0.2:.1f}" width="{r*0.6:.1f}" height="{r*0.6:.1f}" rx="{r*0.1:.1f}" fill="{colour}" transform="rotate({-10+i*10} {x+r*0.3:.1f} {cy:.1f})"/>')
        return "".join(out)
    if kind == "towers":
        out = []
        for i, h in enumerate([0.9, 1.5, 1.1, 1.7, 0.8]):
            x = cx - r + i * r * 0.42
            out.append(f'<rect x="{x:.1f}" y="{cy+r*0.8-r*h:.1f}" width="{r*0.34:.1f}" height="{r*h:.1f}" fill="{colour}"/>')
        return "".join(out)
    if kind == "ball":
        return (f'<circle cx="{cx}" cy="{cy}" r="{r}" fill="{colour}"/>'
                f'<polygon points="' + " ".join(
                    f"{cx + r*0.38*__import__('math').cos(a):.1f},{cy + r*0.38*__import__('math').sin(a):.1f}"
                    for a in [(-90 + k*72) * 3.14159/180 for k in range(5)]) + '" fill="#222222"/>')
    raise ValueError(kind)


def icon(bg, accent, kind):
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 120 120" width="120" height="120">'
            f'<rect width="120" height="120" rx="26" fill="{bg}"/>'
            f'<circle cx="96" cy="22" r="30" fill="#ffffff" opacity="0.08"/>'
            f'{motif(kind, 60, 62, 34, accent)}</svg>\n')


def promo(bg, accent, kind):
    stars = "".join(f'<circle cx="{x}" cy="{y}" r="{s}" fill="#ffffff" opacity="0.35"/>'
                    for x, y, s in [(60, 50, 3), (630, 70, 4), (560, 330, 3), (110, 320, 4), (360, 40, 2)])
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 700 400" width="700" height="400">'
            f'<defs><linearGradient id="g" x1="0" y1="0" x2="0" y2="1">'
            f'<stop offset="0" stop-color="{bg}"/><stop offset="1" stop-color="#101420"/></linearGradient></defs>'
            f'<rect width="700" height="400" fill="url(#g)"/>{stars}'
            f'<circle cx="350" cy="200" r="150" fill="{accent}" opacity="0.12"/>'
            f'{motif(kind, 350, 200, 110, accent)}</svg>\n')


def main():
    os.makedirs(OUT, exist_ok=True)
    for stem, (bg, accent, kind) in GAMES.items():
        with open(os.path.join(OUT, f"{stem}-icon.svg"), "w") as f:
            f.write(icon(bg, accent, kind))
        with open(os.path.join(OUT, f"{stem}-promo.svg"), "w") as f:
            f.write(promo(bg, accent, kind))
    print(json.dumps(sorted(GAMES)))


if __name__ == "__main__":
    main()
