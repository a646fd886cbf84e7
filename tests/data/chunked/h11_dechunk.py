#!/usr/bin/env python3
"""Decodes chunked bodies with h11, an HTTP/1.1 parser of its own that
checks the chunked framing (Debian's python3-h11).

Usage: h11_dechunk.py FILE   FILE holds one body a line, in hexadecimal. Each
body is read as the body of a response with "Transfer-Encoding: chunked",
trailer section and final empty line included. For each, one line goes to
standard output:

    ok HEX            h11 read the whole message; HEX is the data
    malformed TEXT    h11 refused the bytes it was given
    truncated TEXT    h11 refused only when told that the input had ended
"""
import sys

import h11

HEAD = b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"


def decode(body):
    conn = h11.Connection(our_role=h11.CLIENT)
    conn.send(h11.Request(method="GET", target="/", headers=[("Host", "peer")]))
    conn.send(h11.EndOfMessage())
    conn.receive_data(HEAD + body)
    data = b""
    ended = False
    try:
        while True:
            event = conn.next_event()
            if event is h11.NEED_DATA:
                if ended:
                    return "truncated no complete message"
                conn.receive_data(b"")
                ended = True
            elif isinstance(event, h11.Data):
                data += event.data
            elif isinstance(event, h11.EndOfMessage):
                return "ok " + data.hex()
    except h11.RemoteProtocolError as e:
        return ("truncated " if ended else "malformed ") + str(e).replace("\n", " ")


def main(path):
    with open(path) as f:
        for line in f:
            print(decode(bytes.fromhex(line.strip())))


if __name__ == "__main__":
    main(sys.argv[1])
