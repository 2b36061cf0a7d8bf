#!/usr/bin/env python3
"""Reads the game's accessibility tree over AT-SPI, as a screen reader does, on the main, play and after-level
screens, and checks what a blind player would hear.

Run inside a session bus and an X display of its own, as run-atspi-test.sh does:
    atspi_tree.py GAME [--screen main|play|solved ...] [--print-play]

Checks, on every screen: each control a player can press (button, toggle, tab, list item, link, menu item)
is showing with a non-empty name written in Arabic letters, and offers a press action. On the main screen: the
counters of gold, skips and the level, and the button that starts play. After a level: a heading, the answer
read as "الحل: ...", and nothing of the play screen under the card. On the play screen:
the tray tiles named "حرف X" (twelve with those standing in boxes), one box per answer letter named
"الخانة i من n: X" (or "فارغة"), numbered 1 to n, four pictures whose names are Arabic descriptions, the counters of gold, skips and the level; pressing a
tile through AT-SPI fills the first empty box with its letter, and pressing that box sends it back.
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

import warnings

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

# The one-call accessors this uses are the ones every Debian release has; their newer names are not.
warnings.filterwarnings("ignore", category=DeprecationWarning)

ARABIC = re.compile(r"[\u0600-\u06FF]")
PRESSABLE = {
    Atspi.Role.PUSH_BUTTON,
    Atspi.Role.TOGGLE_BUTTON,
    Atspi.Role.CHECK_BOX,
    Atspi.Role.RADIO_BUTTON,
    Atspi.Role.PAGE_TAB,
    Atspi.Role.LIST_ITEM,
    Atspi.Role.LINK,
    Atspi.Role.MENU_ITEM,
}
TILE = re.compile(r"^حرف (\S)$")
BOX = re.compile(r"^الخانة (\d+) من (\d+): (.+)$")


class Failure(Exception):
    pass


def role_name(node):
    return node.get_role_name()


def showing(node):
    states = node.get_state_set()
    return states.contains(Atspi.StateType.SHOWING) and states.contains(Atspi.StateType.VISIBLE)


def walk(node, depth=0):
    """Every showing node under `node`, in tree order, as (depth, node)."""
    if node is None:
        return
    try:
        if depth > 0 and not showing(node):
            return
        yield depth, node
        for i in range(node.get_child_count()):
            yield from walk(node.get_child_at_index(i), depth + 1)
    except gi.repository.GLib.Error:
        return  # the node went away while being read: the screen changed under the walk


def find_app(pid, timeout):
    desktop = Atspi.get_desktop(0)
    end = time.monotonic() + timeout
    while time.monotonic() < end:
        for i in range(desktop.get_child_count()):
            app = desktop.get_child_at_index(i)
            try:
                if app is not None and app.get_process_id() == pid and app.get_child_count() > 0:
                    return app
            except gi.repository.GLib.Error:
                pass
        time.sleep(0.3)
    raise Failure(f"the game (process {pid}) did not appear on the accessibility bus in {timeout} s")


def actions(node):
    action = node.get_action_iface()
    if action is None:
        return []
    return [action.get_action_name(i) for i in range(action.get_n_actions())]


def press(node):
    action = node.get_action_iface()
    names = actions(node)
    for wanted in ("Press", "press", "click", "activate"):
        if wanted in names:
            action.do_action(names.index(wanted))
            return
    raise Failure(f"{node.get_name()!r} offers no press action ({names})")


def nodes_of(app):
    return [(d, n, role_name(n), n.get_name() or "") for d, n in walk(app)]


def check_controls(screen, nodes):
    """Every pressable control has an Arabic name and a press action; returns how many there are."""
    problems, count = [], 0
    for _, node, role, name in nodes:
        if node.get_role() not in PRESSABLE:
            continue
        count += 1
        if not name.strip():
            problems.append(f"{screen}: a {role} without a name")
        elif not ARABIC.search(name):
            problems.append(f"{screen}: the {role} {name!r} has no Arabic name")
        if not actions(node):
            problems.append(f"{screen}: the {role} {name!r} cannot be pressed")
    if count == 0:
        problems.append(f"{screen}: no control can be pressed at all")
    return count, problems


def dump(nodes):
    return "\n".join(f"{'  ' * d}[{role}] {name}" for d, _, role, name in nodes)


def play_checks(nodes):
    problems = []
    tiles = [(n, TILE.match(name)) for _, n, _, name in nodes if TILE.match(name)]
    boxes = [(n, BOX.match(name)) for _, n, _, name in nodes if BOX.match(name)]
    pictures = [(n, name) for _, n, _, name in nodes if n.get_role() == Atspi.Role.IMAGE]
    names = [name for _, _, _, name in nodes]
    # Twelve tiles: those in the tray read as letters, those standing in boxes (the first level gives two) as the
    # boxes' content.
    filled = [m for _, m in boxes if m.group(3) != "فارغة"]
    if len(tiles) + len(filled) != 12:
        problems.append(f"play: {len(tiles)} tray tiles named as letters and {len(filled)} in boxes, not 12")
    if any(len(m.group(3)) != 1 for m in filled):
        problems.append(f"play: a box reads {[m.group(0) for m in filled]}")
    if not boxes:
        problems.append("play: no answer box is named")
    else:
        total = int(boxes[0][1].group(2))
        numbers = sorted(int(m.group(1)) for _, m in boxes)
        if numbers != list(range(1, total + 1)) or any(int(m.group(2)) != total for _, m in boxes):
            problems.append(f"play: the boxes are numbered {numbers} of {total}")
    if len(pictures) != 4:
        problems.append(f"play: {len(pictures)} pictures, not 4")
    for _, name in pictures:
        if not ARABIC.search(name) or name.startswith("الصورة "):
            problems.append(f"play: the picture named {name!r} has no description of what it shows")
    for wanted in ("الذهب: ", "التجاوزات: ", "المرحلة "):
        if not any(n.startswith(wanted) for n in names):
            problems.append(f"play: nothing reads {wanted!r}")
    problems += reading_order(nodes, tiles, boxes)
    return tiles, boxes, problems


def reading_order(nodes, tiles, boxes):
    """The screen is read as it is seen in Arabic: the top bar, the pictures, the boxes, the tray, the help row;
    and inside the boxes and the tray, right to left along a row, then the next row down."""
    problems = []
    names = [name for _, _, _, name in nodes]

    def first(test):
        return next((i for i, n in enumerate(names) if test(n)), None)

    parts = [("the level", first(lambda n: n.startswith("المرحلة "))),
             ("the pictures", next((i for i, (_, n, _, _) in enumerate(nodes) if n.get_role() == Atspi.Role.IMAGE),
                                   None)),
             ("the boxes", first(lambda n: BOX.match(n) is not None)),
             ("the tray", first(lambda n: TILE.match(n) is not None)),
             ("the help row", first(lambda n: n == "اكشف حرفًا"))]
    found = [(what, at) for what, at in parts if at is not None]
    if [at for _, at in found] != sorted(at for _, at in found):
        problems.append(f"play: read out of order: {[what for what, _ in sorted(found, key=lambda p: p[1])]}")
    for what, group in (("boxes", boxes), ("tiles", tiles)):
        places = [n.get_extents(Atspi.CoordType.SCREEN) for n, _ in group]
        for a, b in zip(places, places[1:]):
            same_row = abs(a.y - b.y) < a.height / 2
            if (same_row and b.x >= a.x) or (not same_row and b.y < a.y):
                problems.append(f"play: the {what} are not read right to left, top to bottom "
                                f"({[(p.x, p.y) for p in places]})")
                break
    return problems


def main_checks(nodes):
    names = [name for _, _, _, name in nodes]
    buttons = [name for _, n, _, name in nodes if n.get_role() == Atspi.Role.PUSH_BUTTON]
    problems = []
    for wanted in ("الذهب: ", "التجاوزات: ", "المرحلة "):
        if not any(n.startswith(wanted) for n in names):
            problems.append(f"main: nothing reads {wanted!r}")
    if "ابدأ اللعب" not in buttons:
        problems.append("main: no button reads 'ابدأ اللعب'")
    return problems


def solved_checks(nodes):
    names = [name for _, _, _, name in nodes]
    problems = []
    if not any(n.startswith("الحل: ") and len(n) > len("الحل: ") for n in names):
        problems.append("solved: the answer is not read as 'الحل: ...'")
    if not any(n.get_role() == Atspi.Role.HEADING and name for _, n, _, name in nodes):
        problems.append("solved: no heading says the level is solved")
    # The play screen stays drawn under the card, but a screen reader must not wander into it.
    hidden = [n for n in names if TILE.match(n) or BOX.match(n)]
    if hidden:
        problems.append(f"solved: the play screen under the card is read too ({hidden[:3]}...)")
    return problems


def wait_for(app, test, timeout=5.0):
    end = time.monotonic() + timeout
    while True:
        nodes = nodes_of(app)
        if test(nodes) or time.monotonic() > end:
            return nodes
        time.sleep(0.2)


class Solved(Exception):
    """The pressed tile was the answer's last missing letter: the level ended before its box could be pressed."""

    def __init__(self, letter):
        super().__init__(letter)
        self.letter = letter


def press_through(app, tiles, boxes, avoid):
    """Presses a tile, which must land in the first empty box; pressing that box sends it back. The tray is
    shuffled, so the tile may be the one letter the answer still misses; the level is then solved, which is
    right, and the caller plays the level again from a fresh start avoiding that letter."""
    empty = [m for _, m in boxes if m.group(3) == "فارغة"]
    if not empty:
        return ["play: no empty box to fill"]
    box = f"الخانة {empty[0].group(1)} من {empty[0].group(2)}: "
    choices = [(t, m) for t, m in tiles if m.group(1) not in avoid]
    if not choices:
        return [f"play: every tile's letter solved the level ({sorted(avoid)})"]
    tile, match = choices[0]
    letter = match.group(1)
    press(tile)
    nodes = wait_for(app, lambda ns: any(n == box + letter or n.startswith("الحل: ") for _, _, _, n in ns))
    if any(name.startswith("الحل: ") for _, _, _, name in nodes):
        if len(empty) == 1:
            raise Solved(letter)
        return [f"play: pressing the tile of {letter} solved the level with {len(empty)} boxes empty"]
    found = [(n, name) for _, n, _, name in nodes if name.startswith(box)]
    if not found or found[0][1] != box + letter:
        return [f"play: pressing the tile of {letter} did not fill the first empty box ({[b for _, b in found]})"]
    press(found[0][0])
    nodes = wait_for(app, lambda ns: any(n == box + "فارغة" for _, _, _, n in ns))
    if not any(name == box + "فارغة" for _, _, _, name in nodes):
        return [f"play: pressing {box.rstrip(': ')} did not send its letter back"]
    print(f"[ a11y play: pressing {match.group(0)!r} filled {box}{letter}; pressing that box emptied it ]")
    return []


def answer_dialogs(screen, app, args):
    """Reads and answers, as a player would, the dialogs that open over the screen (the tracking question, how
    to play): each must have a name and a heading, hide the screen beneath it, and close through a button."""
    problems, seen = [], []
    quiet = False
    while len(seen) < 6:
        nodes = nodes_of(app)
        dialogs = [(d, n, name) for d, n, _, name in nodes if n.get_role() == Atspi.Role.DIALOG]
        if not dialogs:
            # One dialog can lead to another a moment later (how to play, then the first level's gift).
            if quiet:
                return problems, seen
            quiet = True
            time.sleep(1.5)
            continue
        quiet = False
        depth, dialog, name = dialogs[-1]
        inside = [(n, role_name(n), n.get_name() or "") for _, n in walk(dialog)]
        seen.append(name)
        if args.print_tree:
            print(f"--- {screen}, dialog\n{dump(nodes)}")
        if not ARABIC.search(name):
            problems.append(f"{screen}: a dialog without an Arabic name")
        if not any(n.get_role() == Atspi.Role.HEADING for n, _, _ in inside):
            problems.append(f"{screen}: the dialog {name!r} has no heading")
        # Nothing of the screen under the dialog may be read while it is up.
        under = [nm for d, n, role, nm in nodes if TILE.match(nm) or BOX.match(nm)]
        if under:
            problems.append(f"{screen}: the play screen is read under the dialog {name!r} ({under[:2]}...)")
        buttons = [(n, nm) for n, _, nm in inside if n.get_role() == Atspi.Role.PUSH_BUTTON]
        if not buttons:
            problems.append(f"{screen}: the dialog {name!r} has no button to close it")
            return problems, seen
        # Declining, starting, or the close button that stands for a tap outside the dialog; else its last.
        closers = [(n, nm) for _, n, _, nm in nodes if n.get_role() == Atspi.Role.PUSH_BUTTON and nm == "إغلاق"]
        plain = [b for b in buttons if b[1] in ("لا تسمح", "ابدأ", "موافق", "إلغاء")]
        choice = plain[0] if plain else buttons[0] if len(buttons) == 1 else closers[0] if closers else buttons[-1]
        press(choice[0])
        end = time.monotonic() + 5
        while time.monotonic() < end and any(
                n.get_name() == name for _, n, _, _ in nodes_of(app) if n.get_role() == Atspi.Role.DIALOG):
            time.sleep(0.2)
        time.sleep(0.5)
    problems.append(f"{screen}: dialogs keep opening ({seen})")
    return problems, seen


def run_screen(game, screen, data_dir, args, avoid=frozenset()):
    env = dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_ACCESSIBILITY="1", QT_QPA_PLATFORM="xcb")
    cmd = [game, "--offline", "--data-dir", data_dir]
    if screen != "main":
        cmd += ["--open", screen]
    log = tempfile.TemporaryFile()
    proc = subprocess.Popen(cmd, env=env, stdout=log, stderr=subprocess.STDOUT)
    try:
        app = find_app(proc.pid, args.timeout)
        time.sleep(args.settle)  # the screen's opening moves
        # Every control, the dialogs' too, has a name; then the dialogs are answered and the screen is read.
        count, problems = check_controls(screen, nodes_of(app))
        more, dialogs = answer_dialogs(screen, app, args)
        problems += more
        if dialogs:
            print(f"[ a11y {screen}: answered the dialogs {dialogs} ]")
        nodes = nodes_of(app)
        count, more = check_controls(screen, nodes)
        problems += more
        if args.print_tree:
            print(f"--- {screen}\n{dump(nodes)}")
        if screen == "main":
            problems += main_checks(nodes)
        if screen == "solved":
            problems += solved_checks(nodes)
        if screen == "play":
            tiles, boxes, more = play_checks(nodes)
            problems += more
            if args.print_play:
                print("The play screen's accessible names, in reading order:")
                for _, node, role, name in nodes:
                    if name and (node.get_role() in PRESSABLE or role in ("image", "label", "heading", "static")):
                        print(f"  [{role}] {name}")
            if tiles and boxes and not more:
                problems += press_through(app, tiles, boxes, avoid)
        print(f"[ a11y {screen}: {count} controls to press, {len(nodes)} accessible nodes, "
              f"{len(problems)} problems ]")
        return problems
    finally:
        proc.terminate()
        try:
            proc.wait(10)
        except subprocess.TimeoutExpired:
            proc.kill()
            proc.wait()
        if proc.returncode not in (0, -15) and args.verbose:
            log.seek(0)
            sys.stderr.write(log.read().decode(errors="replace"))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("game")
    # main, play and solved are read closely; any other name the game's --open takes gets the checks of every
    # screen (its controls' names and press actions, its dialogs).
    parser.add_argument("--screen", action="append")
    parser.add_argument("--print-play", action="store_true", help="list the play screen's accessible names")
    parser.add_argument("--print-tree", action="store_true", help="print each screen's whole tree")
    parser.add_argument("--timeout", type=float, default=30.0)
    parser.add_argument("--settle", type=float, default=2.0)
    parser.add_argument("--verbose", action="store_true")
    args = parser.parse_args()
    if not os.environ.get("DBUS_SESSION_BUS_ADDRESS") or not os.environ.get("DISPLAY"):
        print("atspi_tree.py: needs a session bus and a display; run it through run-atspi-test.sh",
              file=sys.stderr)
        return 2
    problems = []
    with tempfile.TemporaryDirectory() as home:
        for screen in args.screen or ["main", "play", "solved"]:
            data_dir = os.path.join(home, screen)
            os.makedirs(data_dir)
            avoid = set()
            while True:
                try:
                    problems += run_screen(args.game, screen, data_dir, args, frozenset(avoid))
                except Solved as solved:
                    print(f"[ a11y play: the tile of {solved.letter} was the missing letter and solved the level; "
                          "again from a fresh start ]")
                    avoid.add(solved.letter)
                    shutil.rmtree(data_dir, ignore_errors=True)
                    os.makedirs(data_dir)
                    continue
                except Failure as e:
                    problems.append(f"{screen}: {e}")
                break
            shutil.rmtree(data_dir, ignore_errors=True)
    for p in problems:
        print("FAIL " + p)
    checked = len(args.screen or ["main", "play", "solved"])
    print(f"{checked - len({p.split(':')[0] for p in problems})} passed, "
          f"{len({p.split(':')[0] for p in problems})} failed")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
