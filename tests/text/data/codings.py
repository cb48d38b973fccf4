#!/usr/bin/env python3
"""Writes codings.tsv: bytes in hexadecimal and in six-bit text, as Python's own base64 and hex give them.

    python3 tests/text/data/codings.py > tests/text/data/codings.tsv

A row is the bytes as decimal numbers with commas, a tab, their hexadecimal digits, a tab, their six-bit text.
Six-bit text is base 64 of RFC 4648 with another alphabet and without filling characters.
"""
import base64
import random

RFC_4648 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"
OURS = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_$"


def row(data: bytes) -> str:
    six_bit = base64.b64encode(data).decode().rstrip("=").translate(str.maketrans(RFC_4648, OURS))
    return "\t".join([",".join(map(str, data)), data.hex().upper(), six_bit])


def samples():
    yield bytes(range(256))
    yield bytes(255 - i for i in range(256))
    for single in (0, 1, 0x3F, 0x40, 0x7F, 0x80, 0xFE, 0xFF):
        yield bytes([single])
    source = random.Random(5303)
    # The lengths around the blocks that vector instructions take.
    for length in [*range(2, 36), 47, 48, 49, 63, 64, 65, 95, 96, 97, 127, 128, 129]:
        yield source.randbytes(length)


print("\n".join(map(row, samples())))
