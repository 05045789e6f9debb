# SPDX-License-Identifier: Apache-2.0
"""Holds the program's digests, hexadecimal digits and the codecs behind them against Python's, for texts of many lengths."""

import binascii
import csv
import hashlib
import os
import random
import subprocess
import sys
import tempfile

ALPHABET = "abcXYZ019 ,.-_äéßя日本\U00010400"


def texts():
    random.seed(5)
    # Around the lengths at which a digest takes another block.
    lengths = [0, 1, 2, 31, 47, 54, 55, 56, 57, 63, 64, 65, 111, 112, 113, 127, 128, 129, 500] + list(range(3, 30))
    for length in lengths:
        yield "x" * length
        yield "".join(random.choice(ALPHABET) for _ in range(length))


def ascii_string(text):
    units = text.encode("utf-16-be")
    escaped = ""
    for i in range(0, len(units), 2):
        unit = units[i] << 8 | units[i + 1]
        escaped += chr(unit) if unit < 0x80 and unit != 0x5C else f"\\{unit:04X}"
    return escaped


def main():
    program = sys.argv[1:]
    values = [text.rstrip(" ") + "|" for text in texts()]
    expected = []
    for text in values:
        data = text.encode()
        digests = [hashlib.new(name, data).hexdigest() for name in ("md5", "sha224", "sha256", "sha384", "sha512")]
        digits = binascii.hexlify(data).decode().upper()
        expected.append(digests + [digits, text, ascii_string(text), str(int.from_bytes(text[0].encode(), "big")), text[0]])
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "t.csv")
        with open(path, "w", newline="", encoding="utf-8") as file:
            csv.writer(file).writerows([["s"]] + [[text] for text in values])
        query = ("SELECT MD5(s), SHA2(s, 224), SHA2(s, 0), SHA2(s, 384), SHA2(s, 512), RAWTOHEX(s), "
                 "BINARY_TO_CHAR(HEXTORAW(RAWTOHEX(s))), ASCIISTR(s), ASCII(s), CHR(ASCII(s)) FROM t")
        output = subprocess.run(program + [path, query], check=True, capture_output=True).stdout.decode()
    found = list(csv.reader(output.splitlines()))[1:]
    assert len(found) == len(expected), (len(found), len(expected))
    for text, row, wanted in zip(values, found, expected):
        assert row == wanted, (text, row, wanted)


main()
