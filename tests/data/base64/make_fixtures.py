#!/usr/bin/env python3
"""Makes the Base64 fixtures again: run it in this directory.

input.bin     10,000 bytes of every value in a fixed pseudo-random order.
mime-N.txt    base64.encodebytes of the first N bytes of input.bin (lines of
              76 characters), its LF line ends written as CR LF.
"""
import base64
import random

SIZES = [0, 1, 2, 3, 56, 57, 58, 113, 114, 115, 3072, 3073, 4000, 10000]

data = random.Random(4648).randbytes(10000)
with open("input.bin", "wb") as f:
    f.write(data)
for n in SIZES:
    with open("mime-%d.txt" % n, "wb") as f:
        f.write(base64.encodebytes(data[:n]).replace(b"\n", b"\r\n"))
