#!/bin/sh
# Makes the gzip members that the gzip input stream tests decode, each with
# the content it must decode to. Producers: the gzip program and Python's gzip
# and zlib modules. Run from anywhere; writes into this script's directory.
# fixtures.txt lists "member content" pairs, one per line.
set -eu
cd "$(dirname "$0")"
rm -f ./*.gz ./*.content fixtures.txt

python3 - <<'PY'
import random

rng = random.Random(1952)
parts = []
for i in range(600):
    parts.append(("line %05d: the quick brown fox jumps over the lazy dog %d\r\n"
                  % (i, rng.randrange(1 << 30))).encode())
parts.append(bytes(rng.randrange(256) for _ in range(12000)))
parts.append(b"\x00" * 2000 + b"\xff" * 2000)
open("mixed.content", "wb").write(b"".join(parts))
open("empty.content", "wb").write(b"")
open("hello.content", "wb").write(b"Hello, gzip!\n" * 3)
PY

fixture() { echo "$1 $2" >> fixtures.txt; }

# The gzip program: levels 1 and 9, with (-N) and without (-n) a stored name.
for level in 1 9; do
    gzip -"$level" -N -c mixed.content > "gzip-$level-name.gz"
    fixture "gzip-$level-name.gz" mixed.content
    gzip -"$level" -n -c mixed.content > "gzip-$level-noname.gz"
    fixture "gzip-$level-noname.gz" mixed.content
done
gzip -9 -n -c empty.content > gzip-empty.gz
fixture gzip-empty.gz empty.content

python3 - <<'PY'
import gzip, io, struct, zlib

mixed = open("mixed.content", "rb").read()
hello = open("hello.content", "rb").read()
lines = []

def fixture(name, member, content):
    open(name, "wb").write(member)
    lines.append("%s %s\n" % (name, content))

# Python's gzip module, with and without a stored name.
buf = io.BytesIO()
with gzip.GzipFile(filename="mixed.content", mode="wb", fileobj=buf, mtime=0) as f:
    f.write(mixed)
fixture("py-gzip-name.gz", buf.getvalue(), "mixed.content")
fixture("py-gzip-noname.gz", gzip.compress(mixed, compresslevel=9, mtime=0), "mixed.content")

# zlib's own gzip wrapper (window bits 31), and stored blocks (level 0).
c = zlib.compressobj(6, zlib.DEFLATED, 31)
fixture("py-zlib-wrapper.gz", c.compress(mixed) + c.flush(), "mixed.content")
c = zlib.compressobj(0, zlib.DEFLATED, 31)
fixture("py-zlib-stored.gz", c.compress(hello) + c.flush(), "hello.content")

# Hand-made headers around zlib's raw deflate, for every combination of
# FEXTRA, FNAME, FCOMMENT and FHCRC (FTEXT set too), with a correct header
# CRC16, and once with a wrong one (which readers do not check).
def member(content, flags, hcrc_delta=0):
    head = bytearray(b"\x1f\x8b\x08" + bytes([flags | 0x01]) + struct.pack("<I", 1234567890) + b"\x02\x03")
    if flags & 0x04:
        extra = b"AP" + struct.pack("<H", 5) + b"\x00\x01\x02\x03\x04" + b"Zz" + struct.pack("<H", 0)
        head += struct.pack("<H", len(extra)) + extra
    if flags & 0x08:
        head += b"hello.content\x00"
    if flags & 0x10:
        head += b"a comment, \xe9t\xe9\x00"
    if flags & 0x02:
        head += struct.pack("<H", ((zlib.crc32(bytes(head)) & 0xFFFF) + hcrc_delta) & 0xFFFF)
    c = zlib.compressobj(9, zlib.DEFLATED, -15)
    body = c.compress(content) + c.flush()
    return bytes(head) + body + struct.pack("<II", zlib.crc32(content), len(content) & 0xFFFFFFFF)

for flags in range(0, 0x20, 2):
    fixture("py-flags-%02x.gz" % flags, member(hello, flags), "hello.content")
fixture("py-flags-1e-badhcrc.gz", member(hello, 0x1E, 1), "hello.content")

open("fixtures.txt", "a").writelines(lines)
PY
