#!/usr/bin/env python3
"""Draws the text sheet's icons as PNG files into resources/images.

checkbox_off.png and checkbox_on.png: a 13 by 13 box with a rounded frame,
the second with a tick; text_tab_menu.png: three 11-pixel bars, 9 high.
Run by hand when the drawing changes; the PNGs are committed."""
import math
import os
import struct
import sys
import zlib


def png(path, width, height, pixel):
    rows = b''
    for y in range(height):
        rows += b'\0' + b''.join(bytes(pixel(x, y)) for x in range(width))

    def chunk(kind, data):
        body = kind + data
        return struct.pack('>I', len(data)) + body + struct.pack('>I', zlib.crc32(body) & 0xffffffff)

    header = struct.pack('>IIBBBBB', width, height, 8, 6, 0, 0, 0)
    with open(path, 'wb') as out:
        out.write(b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', header) +
                  chunk(b'IDAT', zlib.compress(rows, 9)) + chunk(b'IEND', b''))


def coverage(inside, x, y, samples=4):
    """Share of the pixel (x, y) for which inside(px, py) holds."""
    hits = 0
    for i in range(samples):
        for j in range(samples):
            if inside(x + (i + 0.5) / samples, y + (j + 0.5) / samples):
                hits += 1
    return hits / (samples * samples)


def rounded_box(px, py, left, top, right, bottom, radius):
    cx = min(max(px, left + radius), right - radius)
    cy = min(max(py, top + radius), bottom - radius)
    return (px - cx) ** 2 + (py - cy) ** 2 <= radius ** 2 and left <= px <= right and top <= py <= bottom


def near_segment(px, py, ax, ay, bx, by, half_width):
    dx, dy = bx - ax, by - ay
    t = max(0.0, min(1.0, ((px - ax) * dx + (py - ay) * dy) / (dx * dx + dy * dy)))
    return math.hypot(px - (ax + t * dx), py - (ay + t * dy)) <= half_width


FRAME = (0x55, 0x57, 0x53)
FILL = (0xff, 0xff, 0xff)
TICK = (0x20, 0x4a, 0x87)


def checkbox(ticked):
    def pixel(x, y):
        outer = coverage(lambda px, py: rounded_box(px, py, 0.5, 0.5, 12.5, 12.5, 2.5), x, y)
        inner = coverage(lambda px, py: rounded_box(px, py, 1.5, 1.5, 11.5, 11.5, 1.5), x, y)
        colour = [FRAME[k] * (outer - inner) + FILL[k] * inner for k in range(3)]
        if ticked:
            tick = coverage(lambda px, py: near_segment(px, py, 3.2, 6.6, 5.4, 9.2, 1.1)
                            or near_segment(px, py, 5.4, 9.2, 9.9, 3.6, 1.1), x, y)
            colour = [colour[k] * (1 - tick) + TICK[k] * tick for k in range(3)]
        alpha = outer
        if alpha == 0:
            return (0, 0, 0, 0)
        return tuple(int(round(c / alpha)) for c in colour) + (int(round(alpha * 255)),)
    return pixel


def tab_menu(x, y):
    return FRAME + (255,) if y in (0, 4, 8) else (0, 0, 0, 0)


folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), '..', 'resources', 'images')
png(os.path.join(folder, 'checkbox_off.png'), 13, 13, checkbox(False))
png(os.path.join(folder, 'checkbox_on.png'), 13, 13, checkbox(True))
png(os.path.join(folder, 'text_tab_menu.png'), 11, 9, tab_menu)
