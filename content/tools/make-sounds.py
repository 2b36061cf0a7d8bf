#!/usr/bin/env python3
"""Synthesise Tarvolin's sound effects.

Every sound is built here from sine partials, simple FM, envelopes and
filtered noise, then written as a 16-bit PCM mono WAV at 44100 Hz, the format
QSoundEffect plays. Nothing is sampled or imported: the files are the game's
own work and can be rebuilt at any time with

    python3 content/tools/make-sounds.py [--out DIR] [--only STEM ...]

The default output directory is app/resources/sounds/ of this repository.
Only the Python standard library is used, and every random choice comes from
a generator seeded with a fixed string, so the output is the same on every run.

Each sound goes through the same finishing chain: a DC-blocking high-pass,
a short raised-cosine fade at both ends (no clicks), and peak normalisation to
-3 dBFS (no clipping, similar loudness across the set).
"""

import argparse
import math
import os
import random
import struct
import sys
import wave

SR = 44100
PEAK_DBFS = -3.0
TWO_PI = 2.0 * math.pi


# ---------------------------------------------------------------------------
# Basic building blocks
# ---------------------------------------------------------------------------

def n_samples(dur):
    return int(round(dur * SR))


def silence(dur):
    return [0.0] * n_samples(dur)


def mix(dst, src, at=0.0, gain=1.0):
    """Add src into dst starting at time `at` (seconds); dst grows if needed."""
    start = n_samples(at)
    end = start + len(src)
    if end > len(dst):
        dst.extend([0.0] * (end - len(dst)))
    for i, v in enumerate(src):
        dst[start + i] += gain * v
    return dst


def note_freq(name):
    """'C5', 'F#4', 'Eb6' -> frequency in Hz (A4 = 440 Hz)."""
    steps = {"C": -9, "D": -7, "E": -5, "F": -4, "G": -2, "A": 0, "B": 2}
    semis = steps[name[0]]
    rest = name[1:]
    while rest and rest[0] in "#b":
        semis += 1 if rest[0] == "#" else -1
        rest = rest[1:]
    octave = int(rest)
    return 440.0 * 2.0 ** ((semis + 12 * (octave - 4)) / 12.0)


def attack_gain(t, attack):
    """Raised-cosine attack from 0 to 1 over `attack` seconds."""
    if attack <= 0.0 or t >= attack:
        return 1.0
    return 0.5 - 0.5 * math.cos(math.pi * t / attack)


def release_tail(sig, release=0.005):
    """Raised-cosine fade over the last `release` seconds, so that a note cut
    short (to be mixed into a longer sound) never ends with a step."""
    m = min(len(sig), max(1, n_samples(release)))
    n = len(sig)
    for i in range(m):
        sig[n - 1 - i] *= 0.5 - 0.5 * math.cos(math.pi * i / m)
    return sig


def partials_tone(freq, dur, partials, attack=0.002, glide=None, vibrato=None,
                  release=0.005):
    """Sum of decaying sine partials.

    partials: list of (ratio, amplitude, decay_tau_seconds); tau None = no decay.
    glide: optional function t -> frequency multiplier (pitch bends).
    vibrato: optional (rate_hz, depth_fraction).
    release: fade at the very end (see release_tail).
    """
    n = n_samples(dur)
    out = [0.0] * n
    phases = [0.0] * len(partials)
    decays = [math.exp(-1.0 / (tau * SR)) if tau else 1.0 for _, _, tau in partials]
    levels = [amp for _, amp, _ in partials]
    for i in range(n):
        t = i / SR
        mul = glide(t) if glide else 1.0
        if vibrato:
            mul *= 1.0 + vibrato[1] * math.sin(TWO_PI * vibrato[0] * t)
        f0 = freq * mul
        s = 0.0
        for k, (ratio, _, _) in enumerate(partials):
            fk = f0 * ratio
            if fk < SR * 0.45:
                s += levels[k] * math.sin(phases[k])
            phases[k] += TWO_PI * fk / SR
            levels[k] *= decays[k]
        out[i] = s * attack_gain(t, attack)
    return release_tail(out, release)


def fm_tone(freq, dur, ratio=1.0, index=(2.0, 1.0, 0.08), attack=0.012,
            decay_tau=0.6, release=0.0, hold=None):
    """Two-operator FM tone, brass-like when ratio is 1.

    index: (peak, sustain, tau): the modulation index jumps to `peak` during
    the attack and relaxes to `sustain` with time constant `tau`.
    hold: if set, the note is released (raised-cosine) over `release` seconds
    starting at time `hold`.
    """
    n = n_samples(dur)
    out = [0.0] * n
    pk, sus, itau = index
    for i in range(n):
        t = i / SR
        idx = sus + (pk - sus) * math.exp(-t / itau)
        # the index also grows with the attack so that the onset is soft
        a = attack_gain(t, attack)
        idx *= a
        env = a * math.exp(-t / decay_tau) if decay_tau else a
        if hold is not None and t > hold:
            r = (t - hold) / release if release > 0 else 1.0
            env *= 0.0 if r >= 1.0 else 0.5 + 0.5 * math.cos(math.pi * r)
        mod = idx * math.sin(TWO_PI * freq * ratio * t)
        out[i] = env * math.sin(TWO_PI * freq * t + mod)
    return release_tail(out)


def noise(dur, rng):
    return [rng.uniform(-1.0, 1.0) for _ in range(n_samples(dur))]


def envelope(sig, fn):
    """Multiply sig by fn(t)."""
    return [v * fn(i / SR) for i, v in enumerate(sig)]


def exp_env(attack, tau):
    return lambda t: attack_gain(t, attack) * math.exp(-t / tau)


class Biquad:
    """RBJ cookbook biquad (lowpass, highpass, bandpass with 0 dB peak)."""

    def __init__(self, kind, freq, q=0.707):
        self.kind = kind
        self.x1 = self.x2 = self.y1 = self.y2 = 0.0
        self.set(freq, q)

    def set(self, freq, q):
        freq = min(max(freq, 10.0), SR * 0.45)
        w0 = TWO_PI * freq / SR
        cw, sw = math.cos(w0), math.sin(w0)
        alpha = sw / (2.0 * q)
        if self.kind == "lp":
            b0, b1, b2 = (1 - cw) / 2, 1 - cw, (1 - cw) / 2
        elif self.kind == "hp":
            b0, b1, b2 = (1 + cw) / 2, -(1 + cw), (1 + cw) / 2
        elif self.kind == "bp":
            b0, b1, b2 = alpha, 0.0, -alpha
        else:
            raise ValueError(self.kind)
        a0, a1, a2 = 1 + alpha, -2 * cw, 1 - alpha
        self.b0, self.b1, self.b2 = b0 / a0, b1 / a0, b2 / a0
        self.a1, self.a2 = a1 / a0, a2 / a0

    def step(self, x):
        y = (self.b0 * x + self.b1 * self.x1 + self.b2 * self.x2
             - self.a1 * self.y1 - self.a2 * self.y2)
        self.x2, self.x1 = self.x1, x
        self.y2, self.y1 = self.y1, y
        return y


def filt(sig, kind, freq, q=0.707, passes=1):
    for _ in range(passes):
        bq = Biquad(kind, freq, q)
        sig = [bq.step(v) for v in sig]
    return sig


def sweep_filt(sig, kind, freq_fn, q=0.707, block=16):
    """Filter whose cutoff/centre follows freq_fn(t)."""
    bq = Biquad(kind, freq_fn(0.0), q)
    out = [0.0] * len(sig)
    for i, v in enumerate(sig):
        if i % block == 0:
            bq.set(freq_fn(i / SR), q)
        out[i] = bq.step(v)
    return out


def noise_burst(dur, rng, kind, freq, q, attack, tau):
    """A short burst of filtered noise (mallet strikes, clicks, ticks)."""
    sig = filt(noise(dur, rng), kind, freq, q)
    return release_tail(envelope(sig, exp_env(attack, tau)))


# ---------------------------------------------------------------------------
# Instruments
# ---------------------------------------------------------------------------

def marimba(freq, dur, rng, tau=0.28, bright=1.0):
    """Soft mallet bar: fundamental, tuned 4th harmonic, a little bell colour."""
    body = partials_tone(freq, dur, [
        (1.0, 1.0, tau),
        (2.0, 0.10 * bright, tau * 0.5),
        (3.93, 0.22 * bright, tau * 0.18),
        (9.2, 0.05 * bright, tau * 0.06),
    ], attack=0.0025)
    strike = noise_burst(0.03, rng, "bp", min(freq * 4.0, 6000.0), 1.2, 0.0008, 0.003)
    return mix(body, strike, gain=0.12 * bright)


def bell(freq, dur, rng, tau=0.25, bright=1.0, attack=0.0015):
    """Small bright bell / glockenspiel bar."""
    body = partials_tone(freq, dur, [
        (1.0, 1.0, tau),
        (2.0, 0.30 * bright, tau * 0.55),
        (2.76, 0.22 * bright, tau * 0.35),
        (4.07, 0.10 * bright, tau * 0.2),
        (5.40, 0.06 * bright, tau * 0.12),
    ], attack=attack)
    strike = noise_burst(0.02, rng, "bp", min(freq * 3.0, 6000.0), 1.0, 0.001, 0.0015)
    return mix(body, strike, gain=0.05 * bright)


def soft_tone(freq, dur, tau=0.35, attack=0.015, glide=None):
    """Mellow, round tone (sine with a few quiet harmonics)."""
    return partials_tone(freq, dur, [
        (1.0, 1.0, tau),
        (2.0, 0.28, tau * 0.6),
        (3.0, 0.10, tau * 0.4),
        (4.0, 0.04, tau * 0.3),
    ], attack=attack, glide=glide)


def woodblock(freq, dur, rng, tau=0.02, attack=0.0008, knock=0.25, knock_freq=None):
    """Hollow wooden knock: inharmonic modes with a slight pitch drop."""
    drop = lambda t: 1.0 + 0.04 * math.exp(-t / 0.006)
    body = partials_tone(freq, dur, [
        (1.0, 1.0, tau),
        (2.32, 0.30, tau * 0.5),
        (4.05, 0.10, tau * 0.25),
    ], attack=attack, glide=drop)
    kf = knock_freq or freq * 2.5
    strike = noise_burst(dur, rng, "bp", kf, 1.5, attack, 0.002)
    return mix(body, strike, gain=knock)


def sparkle(dur, rng, count, t0, t1, fmin, fmax, tau=(0.04, 0.09), fall=1.5):
    """Scattered tiny glassy pings between t0 and t1, fading in density."""
    # pentatonic pitches sound pleasant together whatever the order
    base = [1.0, 9 / 8, 5 / 4, 3 / 2, 5 / 3]
    pitches = []
    f = 130.81  # C3 reference
    while f < fmax * 2:
        for r in base:
            p = f * r
            if fmin <= p <= fmax:
                pitches.append(p)
        f *= 2
    out = silence(dur)
    for k in range(count):
        u = rng.random()
        at = t0 + (t1 - t0) * (u ** fall)
        amp = (1.0 - 0.6 * (at - t0) / max(t1 - t0, 1e-6)) * rng.uniform(0.5, 1.0)
        p = rng.choice(pitches)
        ping = partials_tone(p, rng.uniform(*tau) * 5, [
            (1.0, 1.0, rng.uniform(*tau)),
            (2.76, 0.15, tau[0] * 0.5),
        ], attack=0.001)
        mix(out, ping, at=at, gain=amp)
    return filt(out[:n_samples(dur)], "lp", 9000.0)


# ---------------------------------------------------------------------------
# Finishing
# ---------------------------------------------------------------------------

def finish(sig, dur, fade_in=0.002, fade_out=0.012):
    """Trim/pad to dur, remove DC, fade both ends, normalise to PEAK_DBFS."""
    n = n_samples(dur)
    sig = (sig + [0.0] * n)[:n]
    # DC blocker / 25 Hz high-pass
    sig = filt(sig, "hp", 25.0, 0.707)
    fi = max(1, n_samples(fade_in))
    fo = max(1, n_samples(fade_out))
    for i in range(fi):
        sig[i] *= 0.5 - 0.5 * math.cos(math.pi * i / fi)
    for i in range(fo):
        sig[n - 1 - i] *= 0.5 - 0.5 * math.cos(math.pi * i / fo)
    peak = max(abs(v) for v in sig) or 1.0
    target = 10.0 ** (PEAK_DBFS / 20.0)
    g = target / peak
    return [v * g for v in sig]


def write_wav(path, sig):
    frames = bytearray()
    for v in sig:
        s = int(round(v * 32767.0))
        s = max(-32768, min(32767, s))
        frames += struct.pack("<h", s)
    with wave.open(path, "wb") as w:
        w.setnchannels(1)
        w.setsampwidth(2)
        w.setframerate(SR)
        w.writeframes(bytes(frames))


# ---------------------------------------------------------------------------
# The sounds
# ---------------------------------------------------------------------------

def s_tap5(rng):
    """Menu tap: a soft, round bubble pop."""
    dur = 0.06
    rise = lambda t: 0.55 + 0.45 * (1.0 - math.exp(-t / 0.012))
    pop = partials_tone(1150.0, dur, [(1.0, 1.0, 0.011), (2.0, 0.12, 0.005)],
                        attack=0.0015, glide=rise)
    tick = noise_burst(dur, rng, "lp", 3000.0, 0.7, 0.0006, 0.0025)
    mix(pop, tick, gain=0.18)
    return finish(pop, dur, 0.0015, 0.02)


def s_tap1(rng):
    """Light tap: a small high knock."""
    dur = 0.07
    body = partials_tone(1480.0, dur, [(1.0, 1.0, 0.011), (2.7, 0.25, 0.004)],
                         attack=0.001)
    tick = noise_burst(dur, rng, "bp", 4200.0, 1.0, 0.0006, 0.0018)
    mix(body, tick, gain=0.35)
    return finish(filt(body, "lp", 7000.0), dur, 0.001, 0.02)


def s_tap2(rng):
    """Letter picked up: a warm, short wooden tock (heard constantly: soft top)."""
    dur = 0.09
    tock = woodblock(760.0, dur, rng, tau=0.018, knock=0.18, knock_freq=1900.0)
    thump = partials_tone(260.0, dur, [(1.0, 1.0, 0.012)], attack=0.0015)
    mix(tock, thump, gain=0.25)
    tock = filt(tock, "lp", 4500.0)
    return finish(tock, dur, 0.001, 0.025)


def s_tap3(rng):
    """Tile dropped: softer, lower and more damped than tap2."""
    dur = 0.09
    tock = woodblock(480.0, dur, rng, tau=0.02, attack=0.003, knock=0.12,
                     knock_freq=1100.0)
    thump = partials_tone(170.0, dur, [(1.0, 1.0, 0.016)], attack=0.003)
    mix(tock, thump, gain=0.35)
    tock = filt(tock, "lp", 2500.0)
    return finish(tock, dur, 0.002, 0.025)


def s_click1(rng):
    """Button click: crisp and tiny."""
    dur = 0.05
    clk = noise_burst(dur, rng, "bp", 3400.0, 1.4, 0.0005, 0.0022)
    ping = partials_tone(2350.0, dur, [(1.0, 1.0, 0.005)], attack=0.0008)
    mix(clk, ping, gain=0.6)
    return finish(filt(clk, "lp", 9000.0), dur, 0.0008, 0.02)


def s_click2(rng):
    """Second button click: a touch lower with a little body."""
    dur = 0.05
    clk = noise_burst(dur, rng, "bp", 2300.0, 1.2, 0.0006, 0.0028)
    ping = partials_tone(1550.0, dur, [(1.0, 1.0, 0.007)], attack=0.001)
    body = partials_tone(620.0, dur, [(1.0, 1.0, 0.008)], attack=0.0015)
    mix(clk, ping, gain=0.55)
    mix(clk, body, gain=0.35)
    return finish(filt(clk, "lp", 8000.0), dur, 0.0008, 0.02)


def s_info(rng):
    """Information pop: a friendly upward 'bloop' with a bell tail."""
    dur = 0.25
    up = lambda t: 0.72 + 0.28 * (1.0 - math.exp(-t / 0.018))
    bloop = partials_tone(1046.5, dur, [(1.0, 1.0, 0.07), (2.0, 0.18, 0.04),
                                        (3.0, 0.05, 0.02)],
                          attack=0.003, glide=up)
    return finish(bloop, dur, 0.002, 0.06)


def s_countdown(rng):
    """Countdown beep: clean sine beep with a soft release."""
    dur = 0.2
    f = 880.0
    beep = partials_tone(f, dur, [(1.0, 1.0, 0.5), (2.0, 0.14, 0.3), (3.0, 0.05, 0.2)],
                         attack=0.004)
    rel_start, rel = 0.13, 0.065

    def rel_env(t):
        if t < rel_start:
            return 1.0
        r = min(1.0, (t - rel_start) / rel)
        return 0.5 + 0.5 * math.cos(math.pi * r)
    return finish(envelope(beep, rel_env), dur, 0.002, 0.01)


def s_message(rng):
    """Message alert: two-note chime, a fifth upward."""
    dur = 0.4
    out = silence(dur)
    mix(out, bell(note_freq("A5"), dur, rng, tau=0.11, bright=0.6, attack=0.003), at=0.0, gain=0.8)
    mix(out, bell(note_freq("E6"), dur - 0.13, rng, tau=0.12, bright=0.6,
                  attack=0.003), at=0.13)
    return finish(out, dur, 0.001, 0.1)


def s_right_answer(rng):
    """Right answer: bright 'ding-ding', a fourth upward."""
    dur = 0.5
    out = silence(dur)
    mix(out, bell(note_freq("B5"), dur, rng, tau=0.14, bright=1.0), at=0.0, gain=0.75)
    mix(out, bell(note_freq("E6"), dur - 0.1, rng, tau=0.16, bright=1.0), at=0.1)
    return finish(out, dur, 0.001, 0.1)


def s_extraword(rng):
    """Bonus found: two quick glassy notes, high and bright."""
    dur = 0.35
    out = silence(dur)
    mix(out, bell(note_freq("G6"), dur, rng, tau=0.09, bright=0.8), at=0.0, gain=0.7)
    mix(out, bell(note_freq("C7"), dur - 0.07, rng, tau=0.13, bright=0.8), at=0.07)
    mix(out, sparkle(dur, rng, 5, 0.09, 0.2, 2500.0, 5000.0, tau=(0.02, 0.04)),
        gain=0.12)
    return finish(out, dur, 0.001, 0.1)


def s_wrong_answer(rng):
    """Wrong answer: two low, soft notes stepping down."""
    dur = 0.45
    out = silence(dur)

    def mellow(freq, d, sag, tau):
        bend = (lambda t: 1.0 - sag * (1.0 - math.exp(-t / 0.12))) if sag else None
        # odd harmonics: a soft triangle-like, slightly hollow voice
        return partials_tone(freq, d, [(1.0, 1.0, tau), (3.0, 0.11, tau * 0.55),
                                       (5.0, 0.04, tau * 0.35), (2.0, 0.1, tau * 0.7)],
                             attack=0.008, glide=bend)
    first = mellow(note_freq("D4"), 0.2, 0.0, 0.22)
    first = envelope(first, lambda t: 1.0 if t < 0.16 else
                     0.5 + 0.5 * math.cos(math.pi * min(1.0, (t - 0.16) / 0.04)))
    mix(out, first, at=0.0, gain=0.9)
    mix(out, mellow(note_freq("A3"), dur - 0.17, 0.03, 0.14), at=0.17)
    out = filt(out, "lp", 2200.0)
    return finish(out, dur, 0.002, 0.1)


def s_incorrect(rng):
    """Incorrect: a soft, low, slightly buzzy 'bonk' that sags in pitch."""
    dur = 0.35
    sag = lambda t: 0.82 + 0.18 * math.exp(-t / 0.06)
    parts = [(float(k), 1.0 / k ** 1.4, 0.14 / (1 + 0.25 * (k - 1))) for k in range(1, 10)]
    buzz = partials_tone(185.0, dur, parts, attack=0.005, glide=sag)
    knock = noise_burst(dur, rng, "lp", 900.0, 0.7, 0.001, 0.006)
    mix(buzz, knock, gain=0.3)
    buzz = filt(buzz, "lp", 1500.0)
    return finish(buzz, dur, 0.002, 0.1)


def s_ticktock(rng):
    """Clock: a higher 'tick' then a lower 'tock', both short and woody."""
    dur = 1.0
    out = silence(dur)
    tick = woodblock(1850.0, 0.12, rng, tau=0.012, knock=0.3, knock_freq=4200.0)
    tock = woodblock(1300.0, 0.12, rng, tau=0.014, knock=0.3, knock_freq=3000.0)
    mix(out, filt(tick, "lp", 6500.0), at=0.01)
    mix(out, filt(tock, "lp", 5500.0), at=0.51, gain=0.95)
    return finish(out, dur, 0.001, 0.05)


def s_enterlevel(rng):
    """Entering a level: an airy whoosh sweeping upwards."""
    dur = 0.4
    centre = lambda t: 350.0 * (3600.0 / 350.0) ** min(1.0, t / 0.36)
    air = sweep_filt(noise(dur, rng), "bp", centre, q=1.3)
    air = sweep_filt(air, "bp", centre, q=0.9)

    def swell(t):
        peak = 0.27
        if t < peak:
            return math.sin(0.5 * math.pi * t / peak) ** 2
        return math.cos(0.5 * math.pi * min(1.0, (t - peak) / (dur - peak))) ** 1.5
    air = envelope(air, swell)
    up = lambda t: 1.0 + 2.0 * min(1.0, t / 0.36) ** 1.3
    tone = partials_tone(330.0, dur, [(1.0, 1.0, None), (2.0, 0.2, None)],
                         attack=0.0, glide=up)
    tone = envelope(tone, swell)
    peak_air = max(abs(v) for v in air) or 1.0
    out = [a / peak_air + 0.22 * b for a, b in zip(air, tone)]
    return finish(out, dur, 0.005, 0.03)


def s_shuffle(rng):
    """Tiles shuffled: a quick patter of small wooden clicks over a soft swish."""
    dur = 0.4
    out = silence(dur)
    count = 26
    for k in range(count):
        # times gathered towards the middle of the gesture
        u = (rng.random() + rng.random() + rng.random()) / 3.0
        at = 0.015 + u * 0.33
        shape = math.sin(math.pi * min(1.0, max(0.0, (at - 0.005) / 0.36)))
        f = rng.uniform(1500.0, 3200.0)
        click = partials_tone(f, 0.03, [(1.0, 1.0, rng.uniform(0.0025, 0.005)),
                                        (2.3, 0.3, 0.0015)], attack=0.0004)
        tick = noise_burst(0.02, rng, "bp", f * 1.8, 1.5, 0.0003, 0.0012)
        mix(click, tick, gain=0.5)
        mix(out, click, at=at, gain=(0.35 + 0.65 * shape) * rng.uniform(0.45, 1.0))
    swish = filt(noise(dur, rng), "bp", 3200.0, 0.8, passes=2)
    swish = envelope(swish, lambda t: math.sin(math.pi * min(1.0, t / dur)) ** 2)
    peak_sw = max(abs(v) for v in swish) or 1.0
    peak_cl = max(abs(v) for v in out) or 1.0
    out = [c / peak_cl + 0.22 * s / peak_sw for c, s in zip(out, swish)]
    return finish(filt(out, "lp", 8000.0), dur, 0.002, 0.03)


def s_iap(rng):
    """Purchase delivered: two bright metallic coin pings and a sparkle shower."""
    dur = 0.6
    out = silence(dur)

    def coin(freq, d, tau):
        body = partials_tone(freq, d, [(1.0, 1.0, tau), (1.47, 0.45, tau * 0.7),
                                       (2.09, 0.30, tau * 0.5), (2.56, 0.18, tau * 0.35),
                                       (3.4, 0.08, tau * 0.2)], attack=0.0008)
        strike = noise_burst(0.02, rng, "bp", 6000.0, 1.0, 0.0008, 0.0012)
        return mix(body, strike, gain=0.08)
    mix(out, coin(1975.5, dur, 0.09), at=0.0, gain=0.75)
    mix(out, coin(2637.0, dur - 0.075, 0.16), at=0.075)
    mix(out, sparkle(dur, rng, 16, 0.1, 0.45, 2600.0, 7000.0), gain=0.3)
    out = filt(out, "lp", 12000.0)
    return finish(out, dur, 0.001, 0.08)


def s_cheer1(rng):
    """Level solved: rising C-major arpeggio ending in a sparkle."""
    dur = 1.2
    out = silence(dur)
    notes = ["C5", "E5", "G5", "C6"]
    step = 0.085
    for k, name in enumerate(notes):
        last = k == len(notes) - 1
        d = dur - k * step
        tone = marimba(note_freq(name), d, rng, tau=0.45 if last else 0.3, bright=0.9)
        mix(out, tone, at=k * step, gain=1.0 if last else 0.8)
        if last:
            # a quiet upper octave bell gives the last note a lift
            mix(out, bell(note_freq("C7"), d, rng, tau=0.3, bright=0.4),
                at=k * step, gain=0.18)
    mix(out, sparkle(dur, rng, 18, 0.3, 0.95, 2000.0, 6500.0), gain=0.22)
    return finish(out, dur, 0.001, 0.2)


def s_gameover(rng):
    """Game over: a gentle descending C-minor phrase that settles and fades."""
    dur = 1.2
    out = silence(dur)
    phrase = [("G4", 0.0, 0.26), ("Eb4", 0.22, 0.26), ("D4", 0.44, 0.26),
              ("C4", 0.66, 0.54)]
    for name, at, d in phrase:
        last = name == "C4"
        tone = soft_tone(note_freq(name), d + 0.15, tau=0.5 if last else 0.3,
                         attack=0.02)
        # each note lets go smoothly as the next one sounds
        release_tail(tone, 0.12)
        mix(out, tone, at=at, gain=1.0 if last else 0.85)
    # a soft low octave under the final note
    mix(out, soft_tone(note_freq("C3"), 0.54, tau=0.45, attack=0.04), at=0.66, gain=0.35)
    out = filt(out, "lp", 2500.0)
    return finish(out, dur, 0.003, 0.25)


def s_finalword(rng):
    """Last word found: a three-note rising fanfare, the last note held."""
    dur = 0.7
    out = silence(dur)
    notes = [("G4", 0.0, 0.12), ("C5", 0.11, 0.12), ("E5", 0.22, 0.48)]
    for name, at, d in notes:
        f = note_freq(name)
        last = name == "E5"
        hold = d - (0.2 if last else 0.03)
        rel = 0.2 if last else 0.03
        brass = fm_tone(f, d, ratio=1.0, index=(2.4, 1.3, 0.06), attack=0.012,
                        decay_tau=0.9 if last else 0.5, hold=hold, release=rel)
        octave = fm_tone(f * 2, d, ratio=1.0, index=(1.2, 0.6, 0.05), attack=0.01,
                         decay_tau=0.5, hold=hold, release=rel)
        mix(out, brass, at=at, gain=0.85 if not last else 1.0)
        mix(out, octave, at=at, gain=0.25)
    mix(out, sparkle(dur, rng, 8, 0.25, 0.55, 2500.0, 6000.0), gain=0.12)
    out = filt(out, "lp", 6000.0)
    return finish(out, dur, 0.002, 0.06)


def s_finishlevel(rng):
    """Level finished: a short, bright, strummed C-major chord."""
    dur = 0.9
    out = silence(dur)
    chord = ["C4", "G4", "C5", "E5", "G5"]
    for k, name in enumerate(chord):
        f = note_freq(name)
        at = 0.012 * k
        brass = fm_tone(f, dur - at, ratio=1.0, index=(2.2, 1.0, 0.07), attack=0.015,
                        decay_tau=0.55, hold=dur - at - 0.3, release=0.3)
        mix(out, brass, at=at, gain=0.9 if k else 0.7)
    mix(out, bell(note_freq("C6"), dur, rng, tau=0.3, bright=0.6), at=0.05, gain=0.35)
    mix(out, sparkle(dur, rng, 14, 0.1, 0.7, 2500.0, 7000.0), gain=0.3)
    out = filt(out, "lp", 7000.0)
    return finish(out, dur, 0.002, 0.15)


SCALE = ["C5", "D5", "E5", "F5", "G5", "A5", "B5"]


def make_note(index):
    def s_note(rng):
        dur = 0.5
        tone = marimba(note_freq(SCALE[index]), dur, rng, tau=0.19, bright=1.0)
        return finish(tone, dur, 0.001, 0.12)
    s_note.__doc__ = "Scale note %d: %s, a soft mallet tone." % (index + 1, SCALE[index])
    return s_note


SOUNDS = {
    "tap5": s_tap5,
    "iap": s_iap,
    "ticktock": s_ticktock,
    "cheer1": s_cheer1,
    "gameover": s_gameover,
    "tap1": s_tap1,
    "tap2": s_tap2,
    "tap3": s_tap3,
    "incorrect": s_incorrect,
    "countdown": s_countdown,
    "message": s_message,
    "click1": s_click1,
    "click2": s_click2,
    "enterlevel": s_enterlevel,
    "extraword": s_extraword,
    "finalword": s_finalword,
    "finishlevel": s_finishlevel,
    "info": s_info,
    "right-answer": s_right_answer,
    "wrong-answer": s_wrong_answer,
    "shuffle": s_shuffle,
}
for _i in range(7):
    SOUNDS["n%d" % (_i + 1)] = make_note(_i)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    default_out = os.path.normpath(os.path.join(here, "..", "..", "app", "resources", "sounds"))
    ap = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    ap.add_argument("--out", default=default_out, help="output directory")
    ap.add_argument("--only", nargs="*", metavar="STEM", help="build only these sounds")
    args = ap.parse_args()

    stems = args.only or list(SOUNDS)
    unknown = [s for s in stems if s not in SOUNDS]
    if unknown:
        sys.exit("unknown sound(s): " + ", ".join(unknown))
    os.makedirs(args.out, exist_ok=True)
    for stem in stems:
        rng = random.Random("tarvolin-sound-" + stem)
        sig = SOUNDS[stem](rng)
        path = os.path.join(args.out, stem + ".wav")
        write_wav(path, sig)
        peak = max(abs(v) for v in sig)
        print("%-13s %6.3f s  peak %6.2f dBFS  %s" % (
            stem, len(sig) / SR, 20 * math.log10(peak), os.path.relpath(path)))


if __name__ == "__main__":
    main()
