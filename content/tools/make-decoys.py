#!/usr/bin/env python3
"""Proposes the decoys (other_letters=) of answers, by the rule the levels follow.

    content/tools/make-decoys.py ANSWER [ANSWER ...]    prints "ANSWER<TAB>DECOYS" for each

An answer and its decoys fill the tray of twelve letters. The decoys are, in this order:
  1. letters that look like a letter of the answer and are not in it (dots moved, hamza moved), at most
     two for each letter of the answer;
  2. the letters of the commonest affixes (ا ل ة ت ن و ي م), which make near-miss forms;
  3. other common letters.
At most one decoy repeats a letter of the answer, so that no wrong word is easier to build than the right
one. The choice inside each step is shuffled by the answer itself, so the same answer always gets the
same decoys. Read the proposal through before using it.
"""
import random
import sys

TRAY = 12
ALPHABET = set("اأإآبتثجحخدذرزسشصضطظعغفقكلمنهويةىءؤئ")
LOOK_ALIKE = [
    "بتثني", "جحخ", "دذ", "رز", "سش", "صض", "طظ", "عغ", "فق", "هة", "اأإآ", "وؤ", "يئى", "كل",
]
AFFIXES = "الةتنويم"
COMMON = "رسعبكدفقهحجشصطزخذضغظثء"


def look_alikes(letter):
    for group in LOOK_ALIKE:
        if letter in group:
            return [c for c in group if c != letter]
    return []


def decoys(answer):
    letters = [c for c in answer if c != " "]
    unknown = [c for c in letters if c not in ALPHABET]
    if unknown:
        raise ValueError(f"{answer}: '{unknown[0]}' is no letter of the game")
    if len(letters) > TRAY:
        raise ValueError(f"{answer}: {len(letters)} letters, and the tray holds {TRAY}")
    wanted = TRAY - len(letters)
    rng = random.Random(answer)
    chosen = []
    repeated = False

    def take(candidates):
        nonlocal repeated
        for c in candidates:
            if len(chosen) == wanted:
                return
            if c in chosen:
                continue
            if c in letters:
                if repeated:
                    continue
                repeated = True
            chosen.append(c)

    for letter in dict.fromkeys(letters):
        alikes = [c for c in look_alikes(letter) if c not in letters]
        rng.shuffle(alikes)
        take(alikes[:2])
    affixes = list(AFFIXES)
    rng.shuffle(affixes)
    take([c for c in affixes if c not in letters])
    common = list(COMMON)
    rng.shuffle(common)
    take([c for c in common if c not in letters])
    take(affixes)  # a short alphabet left: one repeat at most, as above
    if len(chosen) < wanted:
        raise ValueError(f"{answer}: found only {len(chosen)} of {wanted} decoys")
    rng.shuffle(chosen)
    return "".join(chosen)


def main(argv):
    if not argv:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    status = 0
    for answer in argv:
        try:
            print(f"{answer}\t{decoys(answer)}")
        except ValueError as error:
            print(f"make-decoys.py: {error}", file=sys.stderr)
            status = 1
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
