#!/usr/bin/python3
"""Converts an X window dump (xwd, 24 or 32 bits per pixel, TrueColor) to PNG.

usage: xwd_to_png.py WINDOW.xwd OUT.png
"""
import struct
import sys

from PIL import Image


def main(source, target):
    data = open(source, "rb").read()
    header = struct.unpack(">25I", data[:100])
    header_size, width, height = header[0], header[4], header[5]
    byte_order, bytes_per_line, colours = header[7], header[12], header[19]
    start = header_size + colours * 12
    pixels = data[start:start + bytes_per_line * height]
    raw = "BGRX" if byte_order == 0 else "XRGB"
    Image.frombuffer("RGBX", (width, height), pixels, "raw", raw, bytes_per_line, 1).convert("RGB").save(target)


if __name__ == "__main__":
    main(*sys.argv[1:3])
