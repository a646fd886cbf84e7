#!/usr/bin/env python3
"""Makes the chunked-body fixtures of this directory again.

Each fixture is three files:
  NAME.body      the message body exactly as sent, in the chunked transfer coding
  NAME.expected  the decoded data bytes
  NAME.trailer   the bytes that follow the last chunk line: trailer fields and
                 the final empty line

The bodies come from HTTP software that is not ours:
  py_*     request bodies that Python's http.client sends with
           encode_chunked=True, captured on a socket on 127.0.0.1; the
           expected bytes are the data handed to http.client.
  nginx_*  responses of nginx (Debian's package, nginx-light or nginx), run by
           this script on 127.0.0.1 with a configuration of its own and
           stopped by it; the expected bytes are what Python's http.client
           decodes from the captured response, checked against the content
           that nginx was given.

Run it from anywhere: python3 make_fixtures.py [--no-nginx]
"""

import gzip
import http.client
import io
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))


def write_fixture(name, body, expected, trailer):
    for suffix, data in (("body", body), ("expected", expected), ("trailer", trailer)):
        with open(os.path.join(HERE, f"{name}.{suffix}"), "wb") as f:
            f.write(data)
    print(f"{name}: body {len(body)} bytes, data {len(expected)} bytes")


def split_head(raw):
    head, sep, body = raw.partition(b"\r\n\r\n")
    if not sep:
        raise SystemExit("no end of header in the captured message")
    if b"transfer-encoding: chunked" not in head.lower():
        raise SystemExit("the captured message is not chunked:\n" + head.decode("latin-1"))
    return head, body


# ---- Python http.client request bodies ------------------------------------------

def capture_request(body, blocksize=8192):
    """Sends a POST with `body` through http.client (encode_chunked=True) to a
    socket on 127.0.0.1 and returns the bytes that arrived."""
    listener = socket.socket()
    listener.bind(("127.0.0.1", 0))
    listener.listen(1)
    received = []

    def serve():
        conn, _ = listener.accept()
        with conn:
            while True:
                piece = conn.recv(65536)
                if not piece:
                    break
                received.append(piece)

    server = threading.Thread(target=serve)
    server.start()
    client = http.client.HTTPConnection("127.0.0.1", listener.getsockname()[1],
                                        blocksize=blocksize)
    client.request("POST", "/upload", body=body, encode_chunked=True,
                   headers={"Content-Type": "application/octet-stream"})
    client.sock.shutdown(socket.SHUT_WR)  # the server reads up to here
    server.join()
    client.close()
    listener.close()
    return b"".join(received)


def python_fixtures():
    # Several chunks from an iterable, among them binary bytes with NUL, CR and LF.
    pieces = [b"Hello", b", ", b"chunked world!\n", bytes(range(256)), b"x" * 700, b"!"]
    _, body = split_head(capture_request(iter(pieces)))
    write_fixture("py_iter_chunks", body, b"".join(pieces), b"\r\n")

    # A file object sent in blocks of 1000 bytes: chunks of 3e8 and a short last one.
    data = bytes((i * 7 + 3) % 251 for i in range(3100))
    _, body = split_head(capture_request(io.BytesIO(data), blocksize=1000))
    write_fixture("py_file_blocks", body, data, b"\r\n")

    # Data that looks like framing: CR LF lines, hex digits, a last chunk and
    # a trailer inside the chunk data.
    lines = [b"0\r\n\r\n", b"5;ext=1\r\n", b"\r\n", b"FFFFFFFF\r\n", b"\r", b"\n",
             b"Trailer: no\r\n\r\n", b"0\r\n"]
    _, body = split_head(capture_request(iter(lines)))
    write_fixture("py_framing_lookalike", body, b"".join(lines), b"\r\n")


# ---- nginx responses ------------------------------------------------------------

NGINX_CONF = """\
daemon off;
master_process off;
worker_processes 1;
pid {prefix}/nginx.pid;
error_log {prefix}/error.log;
events {{ worker_connections 16; }}
http {{
    access_log off;
    client_body_temp_path {prefix}/tmp;
    proxy_temp_path {prefix}/tmp;
    fastcgi_temp_path {prefix}/tmp;
    uwsgi_temp_path {prefix}/tmp;
    scgi_temp_path {prefix}/tmp;
    default_type text/plain;
    server {{
        listen 127.0.0.1:{port};
        root {prefix}/html;
        add_trailer X-Fixture "{trailer_value}";
        location /ssi/ {{
            ssi on;
            ssi_types text/plain;
        }}
        location /gz/ {{
            gzip on;
            gzip_min_length 0;
            gzip_buffers 2 256;
            # Small reads of the file so that the compressed data leaves in
            # several pieces, each a chunk.
            sendfile off;
            output_buffers 1 512;
            postpone_output 0;
            gzip_types text/plain;
        }}
    }}
}}
"""

TRAILER_VALUE = "made by nginx"


def free_port():
    s = socket.socket()
    s.bind(("127.0.0.1", 0))
    port = s.getsockname()[1]
    s.close()
    return port


def http_get(port, path, extra=""):
    request = (f"GET {path} HTTP/1.1\r\nHost: localhost\r\n{extra}"
               "Connection: close\r\n\r\n").encode()
    with socket.create_connection(("127.0.0.1", port)) as s:
        s.sendall(request)
        parts = []
        while True:
            piece = s.recv(65536)
            if not piece:
                break
            parts.append(piece)
    return b"".join(parts)


class RawSocket:
    """Enough of a socket for http.client.HTTPResponse to read `raw`."""

    def __init__(self, raw):
        self.raw = raw

    def makefile(self, mode):
        return io.BytesIO(self.raw)


def decode_with_http_client(raw):
    response = http.client.HTTPResponse(RawSocket(raw), method="GET")
    response.begin()
    if not response.chunked:
        raise SystemExit("http.client does not see a chunked response")
    return response.read()


def nginx_fixtures():
    nginx = shutil.which("nginx") or "/usr/sbin/nginx"
    if not os.path.exists(nginx):
        raise SystemExit("nginx is not installed (apt-get install nginx-light)")
    prefix = tempfile.mkdtemp(prefix="zum-nginx-")
    try:
        os.makedirs(os.path.join(prefix, "tmp"))
        html = os.path.join(prefix, "html")
        os.makedirs(os.path.join(html, "ssi"))
        os.makedirs(os.path.join(html, "gz"))
        parts = {
            "a.txt": b"First part: plain text.\r\n",
            "b.txt": b"Second part, with a CR LF inside\r\nand a bare LF\n.",
            "c.txt": bytes(range(32, 127)) * 4,
        }
        for name, data in parts.items():
            with open(os.path.join(html, "ssi", name), "wb") as f:
                f.write(data)
        page = (b"<page>\n<!--# include virtual=\"/ssi/a.txt\" -->|"
                b"<!--# include virtual=\"/ssi/b.txt\" -->|"
                b"<!--# include virtual=\"/ssi/c.txt\" -->|"
                b"<!--# include virtual=\"/ssi/a.txt\" --></page>\n")
        assembled = (b"<page>\n" + parts["a.txt"] + b"|" + parts["b.txt"] + b"|"
                     + parts["c.txt"] + b"|" + parts["a.txt"] + b"</page>\n")
        with open(os.path.join(html, "ssi", "page.txt"), "wb") as f:
            f.write(page)
        text = b"".join(b"line %04d of a text that nginx compresses on the fly\r\n" % i
                        for i in range(120))
        text += bytes((i * 131 + 17) % 256 for i in range(1500))  # hardly compressible
        with open(os.path.join(html, "gz", "text.txt"), "wb") as f:
            f.write(text)

        port = free_port()
        conf = os.path.join(prefix, "nginx.conf")
        with open(conf, "w") as f:
            f.write(NGINX_CONF.format(prefix=prefix, port=port, trailer_value=TRAILER_VALUE))
        server = subprocess.Popen([nginx, "-p", prefix, "-c", conf],
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            for _ in range(100):
                try:
                    socket.create_connection(("127.0.0.1", port)).close()
                    break
                except OSError:
                    time.sleep(0.05)
            trailer = f"X-Fixture: {TRAILER_VALUE}\r\n\r\n".encode()

            raw = http_get(port, "/ssi/page.txt")
            _, body = split_head(raw)
            decoded = decode_with_http_client(raw)
            if decoded != assembled:
                raise SystemExit("nginx SSI output is not the assembled page")
            if not body.endswith(b"\r\n" + trailer):
                raise SystemExit("nginx sent no trailer")
            write_fixture("nginx_ssi", body, decoded, trailer)

            raw = http_get(port, "/gz/text.txt", "Accept-Encoding: gzip\r\n")
            _, body = split_head(raw)
            decoded = decode_with_http_client(raw)
            if gzip.decompress(decoded) != text:
                raise SystemExit("nginx gzip output does not decompress to the file")
            if not body.endswith(b"\r\n" + trailer):
                raise SystemExit("nginx sent no trailer")
            write_fixture("nginx_gzip", body, decoded, trailer)
        finally:
            server.terminate()
            server.wait(timeout=10)
    finally:
        shutil.rmtree(prefix, ignore_errors=True)


if __name__ == "__main__":
    python_fixtures()
    if "--no-nginx" not in sys.argv[1:]:
        nginx_fixtures()
