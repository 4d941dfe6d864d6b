#!/usr/bin/env python3
"""Draws the bitmaps of the showcase, so that nobody needs a paint program to change them.

    python3 make_bitmaps.py        writes bitmaps/*.png beside itself

Shapes are functions from a place to a colour with coverage; each pixel takes 16 samples.
"""
import math
import struct
import zlib
from pathlib import Path

FOLDER = Path(__file__).resolve().parent / "bitmaps"
GRID = 4


def write_png(name, width, height, shade):
    rows = bytearray()
    for y in range(height):
        rows.append(0)
        for x in range(width):
            total = [0.0] * 4
            for i in range(GRID * GRID):
                r, g, b, a = shade(x + (i % GRID + 0.5) / GRID, y + (i // GRID + 0.5) / GRID)
                for channel, part in enumerate((r * a, g * a, b * a, a)):
                    total[channel] += part
            a = total[3]
            colour = [c / a if a else 0 for c in total[:3]] + [a / GRID / GRID]
            rows += bytes(max(0, min(255, round(c * 255))) for c in colour)

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)
    (FOLDER / name).write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
                                chunk(b"IDAT", zlib.compress(bytes(rows), 9)) + chunk(b"IEND", b""))


CLEAR = (0.0, 0.0, 0.0, 0.0)


def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def rounded(x, y, left, top, right, bottom, radius):
    dx = max(left + radius - x, 0, x - (right - radius))
    dy = max(top + radius - y, 0, y - (bottom - radius))
    return left <= x <= right and top <= y <= bottom and math.hypot(dx, dy) <= radius


def logo(x, y):
    moon = math.hypot(x - 18, y - 18) <= 14 and math.hypot(x - 24, y - 14) > 11.5
    if moon:
        return (*mix((0.99, 0.86, 0.55), (0.95, 0.55, 0.35), y / 36), 1)
    for i, level in enumerate((6, 11, 8, 14, 9, 5)):
        if rounded(x, y, 40 + i * 6, 19 - level, 43 + i * 6, 19 + level, 1.5):
            return (*mix((0.45, 0.75, 0.98), (0.62, 0.45, 0.95), i / 5), 1)
    return CLEAR


def led(x, y, light):
    distance = math.hypot(x - 9, y - 9)
    if distance <= 5.5:
        shine = max(0, 1 - math.hypot(x - 7, y - 7) / 6)
        return (*mix(light, (1, 1, 1), shine * 0.6), 1)
    if distance <= 7:
        return (0.10, 0.11, 0.13, 1)
    return CLEAR


LIGHTS = [(0.30, 0.13, 0.12), (0.42, 0.18, 0.15), (0.98, 0.42, 0.26), (1.0, 0.62, 0.40)]


def led_strip(x, y):
    frame = min(int(y // 18), 3)
    return led(x, y - 18 * frame, LIGHTS[frame])


def handle(x, y):
    if not rounded(x, y, 1, 1, 27, 15, 3):
        return CLEAR
    if 7.2 <= y <= 8.8:
        return (0.98, 0.62, 0.35, 1)
    body = mix((0.86, 0.88, 0.91), (0.50, 0.53, 0.58), y / 16)
    return (*mix(body, (0.2, 0.22, 0.25), 0.5 if not rounded(x, y, 2, 2, 26, 14, 2) else 0), 1)


def track(x, y):
    if rounded(x, y, 12, 2, 16, 118, 2):
        return (0.08, 0.09, 0.11, 1)
    tick = (y - 8) % 10.2
    if tick < 1 and 8 <= y <= 112 and (x < 7 or x > 21):
        return (0.5, 0.53, 0.58, 0.7)
    return CLEAR


def grille(x, y):
    distance = math.hypot(x % 8 - 4, y % 8 - 4)
    return (0, 0, 0, 0.35) if distance < 1.6 else CLEAR


if __name__ == "__main__":
    FOLDER.mkdir(exist_ok=True)
    write_png("logo.png", 80, 36, logo)
    write_png("led.png", 18, 72, led_strip)
    write_png("handle.png", 28, 16, handle)
    write_png("track.png", 28, 120, track)
    write_png("grille.png", 16, 16, grille)
