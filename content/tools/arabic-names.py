#!/usr/bin/env python3
"""Writes content/pictures/svg/symbols-ar.tsv: a short Arabic name for what each symbol of svg/symbols.tsv shows.

The names of emoji come from the Unicode CLDR's Arabic text-to-speech annotations (Debian's
unicode-cldr-core): the English annotation of an emoji, written in lowercase with '-' for spaces, is the name
symbols.tsv gives it. A game-icons symbol ("gi:NAME") takes the Arabic name of the emoji whose English name is
NAME, when there is one. Rows already in the file whose name was written by hand (marked "manual") are kept as
they are, so that a reviewer can name the symbols that CLDR does not.

    python3 content/tools/arabic-names.py [--cldr /usr/share/unicode/cldr/common]
"""

import argparse
import pathlib
import re
import sys
import xml.etree.ElementTree as ET

HERE = pathlib.Path(__file__).resolve().parent
SVG = HERE.parent / "pictures" / "svg"


def english_key(text: str) -> str:
    text = text.lower().replace("’", "").replace("'", "").replace("“", "").replace("”", "")
    text = text.replace("&", "and")
    return re.sub(r"[^a-z0-9]+", "-", text).strip("-")


# Direction marks and embeddings that CLDR puts around some names: a screen reader needs none of them.
BIDI = re.compile("[\u200e\u200f\u202a-\u202e\u2066-\u2069]")


def tts(path: pathlib.Path) -> dict:
    names = {}
    for node in ET.parse(path).getroot().iter("annotation"):
        if node.get("type") == "tts" and node.text:
            names[node.get("cp")] = " ".join(BIDI.sub("", node.text).split())
    return names


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--cldr", default="/usr/share/unicode/cldr/common")
    args = parser.parse_args()
    cldr = pathlib.Path(args.cldr)
    english, arabic = {}, {}
    for folder in ("annotations", "annotationsDerived"):
        for lang, into in (("en", english), ("ar", arabic)):
            path = cldr / folder / f"{lang}.xml"
            if not path.exists():
                print(f"arabic-names: {path} is missing (apt-get install unicode-cldr-core)", file=sys.stderr)
                return 2
            into.update(tts(path))
    by_english = {}
    for cp, name in english.items():
        if cp in arabic:
            by_english.setdefault(english_key(name), arabic[cp])

    out = SVG / "symbols-ar.tsv"
    manual = {}
    if out.exists():
        for line in out.read_text(encoding="utf-8").splitlines():
            parts = line.split("\t")
            if len(parts) == 3 and parts[2] == "manual":
                manual[parts[0]] = parts[1]

    shows = set()
    for line in (SVG / "symbols.tsv").read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#") and "\t" in line:
            shows.add(line.split("\t")[1])

    rows, unnamed = [], 0
    for what in sorted(shows):
        if what in manual:
            rows.append(f"{what}\t{manual[what]}\tmanual")
            continue
        key = what[3:] if what.startswith("gi:") else what
        name = by_english.get(key)
        if name:
            rows.append(f"{what}\t{name}\tcldr")
        else:
            unnamed += 1
    header = ("# what a symbol shows\tits Arabic name\twhere the name comes from (cldr: written by "
              "arabic-names.py; manual: by hand, kept)\n")
    out.write_text(header + "\n".join(rows) + "\n", encoding="utf-8")
    print(f"arabic-names: {len(rows)} of {len(shows)} named, {unnamed} without an Arabic name")
    return 0


if __name__ == "__main__":
    sys.exit(main())
