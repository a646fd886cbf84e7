#!/usr/bin/env python3
"""Decodes HTTP/1.1 chunked bodies with Python's own HTTP client.

The HTTP client is lenient (it does not check the CR LF behind chunk data, nor
the final empty line), so each body is also parsed strictly by the grammar of
RFC 2616 section 3.6.1, without extensions or trailer fields, and both
results must agree.

Usage: dechunk.py BODY...   For each file BODY (a chunked body, from the
first chunk-size line to the final empty line), writes the decoded bytes to
BODY.out. Exits non-zero if any body is malformed or has bytes after its end.
"""
import http.client
import io
import sys


class KeptOpen(io.BytesIO):
    """A file that the response cannot close, so the rest can be checked."""

    def close(self):
        pass


class FakeSocket:
    def __init__(self, data):
        self._file = KeptOpen(data)

    def makefile(self, *args, **kwargs):
        return self._file


def dechunk(body):
    head = b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
    sock = FakeSocket(head + body)
    response = http.client.HTTPResponse(sock)
    response.begin()
    data = response.read()
    rest = sock._file.read()
    if rest:
        raise ValueError("%d bytes after the end of the body" % len(rest))
    return data


def dechunk_strict(body):
    data = bytearray()
    at = 0
    while True:
        end = body.index(b"\r\n", at)
        line = body[at:end]
        if not line or any(c not in b"0123456789abcdefABCDEF" for c in line):
            raise ValueError("bad chunk-size line %r" % line)
        size = int(line, 16)
        at = end + 2
        if size == 0:
            if body[at:] != b"\r\n":
                raise ValueError("the body does not end with one empty line")
            return bytes(data)
        data += body[at:at + size]
        if len(body) < at + size + 2 or body[at + size:at + size + 2] != b"\r\n":
            raise ValueError("chunk data not followed by CR LF")
        at += size + 2


def main(paths):
    status = 0
    for path in paths:
        try:
            with open(path, "rb") as f:
                body = f.read()
            data = dechunk(body)
            if data != dechunk_strict(body):
                raise ValueError("the HTTP client and the strict parse differ")
            with open(path + ".out", "wb") as f:
                f.write(data)
        except Exception as e:  # report and go on with the next body
            print("%s: %s" % (path, e), file=sys.stderr)
            status = 1
    return status


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
