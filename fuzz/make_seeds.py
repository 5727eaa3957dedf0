#!/usr/bin/env python3
"""Writes the seed corpus of every harness into corpus/<Harness>/: slanted-edge regions,
small chart-like frames and a few degenerate inputs, each behind its harness's header."""
import math
import os
import struct

import numpy as np

HERE = os.path.dirname(os.path.abspath(__file__))


def edge(size=64, angle=5.0, sigma=0.8, dark=40, bright=200, horizontal=False):
    rows, cols = np.mgrid[0:size, 0:size].astype(float)
    if horizontal:
        rows, cols = cols, rows
    c = (size - 1) / 2
    d = (cols - c - math.tan(math.radians(angle)) * (rows - c)) * math.cos(math.radians(angle))
    erf = np.vectorize(math.erf)
    return dark + (bright - dark) * 0.5 * (1 + erf(d / (sigma * math.sqrt(2))))


def squares(width, height, dark=40, light=200):
    """A light frame with a few dark squares turned a few degrees."""
    img = np.full((height, width), float(light))
    rows, cols = np.mgrid[0:height, 0:width].astype(float)
    for cx, cy, half, turn in ((width * 0.3, height * 0.4, 20, 7), (width * 0.7, height * 0.6, 25, -5)):
        a = math.radians(turn)
        u = (cols - cx) * math.cos(a) + (rows - cy) * math.sin(a)
        v = -(cols - cx) * math.sin(a) + (rows - cy) * math.cos(a)
        img[(abs(u) < half) & (abs(v) < half)] = dark
    return img


def write(harness, name, header, payload):
    folder = os.path.join(HERE, "corpus", harness)
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "wb") as f:
        f.write(header + payload)


def main():
    e8 = np.round(edge()).astype(np.uint8)
    e16 = (e8.astype(np.uint16) * 256).astype("<u2")
    bgr = np.dstack([e8, e8, e8])
    steep = np.round(edge(angle=40)).astype(np.uint8)
    flat = np.full((64, 64), 120, np.uint8)
    # RegionSfrFuzz: int16 w, int16 h, uint16 format selector (index into its list below
    # 0x8000), uint8 flags, uint8 divisor byte; pixels.
    region = lambda w, h, sel, img: write("RegionSfrFuzz", f"{sel}-{w}x{h}-{img[1]}",
                                          struct.pack("<hhHBB", w, h, sel, 0, 96), img[0])
    region(64, 64, 0, (e8.tobytes(), "grey"))
    region(64, 64, 1, (e16.tobytes(), "grey16"))
    region(64, 64, 2, (bgr.tobytes(), "bgr"))
    region(64, 64, 4, (e8.tobytes(), "bayer"))
    region(64, 64, 0, (steep.tobytes(), "steep"))
    region(64, 64, 0, (flat.tobytes(), "flat"))
    region(3, 3, 0, (e8[:3, :3].tobytes(), "tiny"))
    # RegionListFuzz: int16 w, int16 h, uint8 format pick, int8 count, uint8 flags, then
    # count x (x, y, w, h) int16; pixels.
    image = np.hstack([e8, e8])
    rois = struct.pack("<hhhh", 0, 0, 64, 64) + struct.pack("<hhhh", 64, 0, 64, 64)
    write("RegionListFuzz", "two-regions", struct.pack("<hhBbB", 128, 64, 0, 2, 0) + rois,
          image.tobytes())
    write("RegionListFuzz", "outside", struct.pack("<hhBbB", 128, 64, 0, 1, 0) +
          struct.pack("<hhhh", 100, 0, 64, 64), image.tobytes())
    # LocateFuzz: uint8 which, int16 w, int16 h, int16 mark, uint8 flags; grey pixels.
    frame = np.round(squares(320, 240)).astype(np.uint8)
    for which in range(6):
        write("LocateFuzz", f"squares-{which}", struct.pack("<BhhhB", which, 320, 240, 40, 0),
              frame.tobytes())
    # FrameMeasurementFuzz: uint8 member, int16 w, int16 h, float divisor, int16 roi,
    # int16 mark, uint8 flags; 16-bit words (10-bit scale).
    words = (np.round(squares(256, 192)) * 4).astype("<u2")
    for member in (0, 1, 6, 10):  # one per record, road to grey and region rule
        write("FrameMeasurementFuzz", f"squares-{member}",
              struct.pack("<BhhfhhB", member, 256, 192, 4.0, 40, 90, 0), words.tobytes())
    # ChartMeasurementFuzz: int16 w, int16 h, uint16 format selector, uint8 flags, uint8 bits,
    # then the description (uint8 shape count, 4 x int16 corners and uint8 polarity each,
    # uint8 lone-edge switch, uint8 slot count); pixels.
    chart = squares(240, 180)
    chart8 = np.round(chart).astype(np.uint8)
    chart16 = (np.round(chart) * 256).astype("<u2")
    none = struct.pack("<BBB", 0, 1, 0)
    write("ChartMeasurementFuzz", "grey8", struct.pack("<hhHBB", 240, 180, 0, 0, 0) + none,
          chart8.tobytes())
    write("ChartMeasurementFuzz", "grey16", struct.pack("<hhHBB", 240, 180, 1, 0, 16) + none,
          chart16.tobytes())
    write("ChartMeasurementFuzz", "bayer8-planes", struct.pack("<hhHBB", 240, 180, 4, 4, 0) + none,
          chart8.tobytes())
    square = struct.pack("<hhhhhhhhB", 52, 52, 92, 55, 89, 95, 49, 92, 2)
    described = struct.pack("<B", 1) + square + struct.pack("<BB", 1, 0)
    write("ChartMeasurementFuzz", "described", struct.pack("<hhHBB", 240, 180, 0, 16, 0) + described,
          chart8.tobytes())
    # ConvertFuzz: uint8 op, int16 w, int16 h, uint16 format, uint8 mode; samples.
    mosaic = np.round(squares(64, 48)).astype(np.uint8)
    for op, fmt in ((0, 0), (1, 0), (2, 0), (3, 0x11), (3, 0x22), (4, 0x18), (5, 0)):
        write("ConvertFuzz", f"op{op}-{fmt:x}", struct.pack("<BhhHB", op, 64, 48, fmt, 0),
              (mosaic.astype("<u2") * 4).tobytes() if op < 3 or fmt & 0x60 else mosaic.tobytes())

    # GreyRoadDiffFuzz: uint8 road/depth/phase, uint8 target, uint8 w - 1, uint8 h - 1; words.
    for choice, w, h in ((0, 64, 48), (1, 64, 48), (3, 33, 7), (6, 1, 5), (13, 159, 3)):
        frame = np.round(squares(w, h)).astype("<u2") * 4
        write("GreyRoadDiffFuzz", f"road{choice}-{w}x{h}", struct.pack("<BBBB", choice, 0, w - 1, h - 1),
              frame.tobytes())


if __name__ == "__main__":
    main()
