#!/bin/sh
# Makes the damaged and framed inputs that the zumcat cases (cases.tsv) run
# the tool on, from the gzip fixtures and the captured HTTP response. Run from
# anywhere; writes into this script's directory.
set -eu
cd "$(dirname "$0")"
python3 - <<'PY'
member = open("../gzip/gzip-9-name.gz", "rb").read()
sample = open("../../../examples/http-sample/sample-response.http", "rb").read()
def write(name, data):
    open(name, "wb").write(data)
write("junk-behind.gz", member + b"junk")
write("cut.gz", member[: len(member) // 2])
bad = bytearray(member); bad[-8] ^= 0x55; write("bad-crc.gz", bytes(bad))
bad = bytearray(member); bad[-1] ^= 0x01; write("bad-length.gz", bytes(bad))
write("cut-sample.http", sample[:-40])
write("gzip-behind-member.http", b"HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: %d\r\n\r\n"
      % (len(member) + 2) + member + b"xy")
PY
