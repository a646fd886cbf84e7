#!/usr/bin/env bash
# Captures sample-response.http: a real HTTP/1.1 response of nginx (Debian's
# package) on 127.0.0.1, with a gzip-compressed body sent in the chunked
# transfer coding and a trailer field. nginx runs from a private prefix and
# is stopped by this script.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
command -v nginx >/dev/null || { apt-get update -q && apt-get install -y -q nginx-light || apt-get install -y -q nginx; }

work=$(mktemp -d)
port=${PORT:-18080}
trap 'nginx -p "$work" -c nginx.conf -s stop 2>/dev/null || true; rm -rf "$work"' EXIT
mkdir -p "$work/html" "$work/logs"
chmod 755 "$work" "$work/html"   # the worker process reads the document

# The document: 1500 numbered lines of seeded pseudo-random words, about 90 KB.
python3 - "$work/html/report.txt" <<'PY'
import random, sys
rng = random.Random(1952)
words = ("stream buffer chunk trailer member deflate header block line byte window "
         "crc length inflate upstream downstream filter wrap unwrap push back").split()
with open(sys.argv[1], "w") as f:
    for i in range(1, 1501):
        f.write(f"{i:04d} {rng.randrange(10**6):06d} " + " ".join(rng.choice(words) for _ in range(9)) + "\n")
PY

cat > "$work/nginx.conf" <<CONF
daemon on;
pid $work/nginx.pid;
error_log $work/logs/error.log;
events { worker_connections 16; }
http {
    access_log off;
    default_type text/plain;
    server {
        listen 127.0.0.1:$port;
        root $work/html;
        gzip on;
        gzip_http_version 1.1;
        gzip_min_length 0;
        gzip_buffers 4 4k;
        output_buffers 1 4k;
        sendfile off;
        gzip_types text/plain;
        chunked_transfer_encoding on;
        add_trailer X-Served-By zum-sample always;
    }
}
CONF
nginx -p "$work" -c nginx.conf

python3 - "$port" "$here/sample-response.http" "$work/html/report.txt" "$here/sample-body.txt" <<'PY'
import socket, sys, time, shutil
port, out, doc, body = int(sys.argv[1]), sys.argv[2], sys.argv[3], sys.argv[4]
for _ in range(50):
    try:
        s = socket.create_connection(("127.0.0.1", port), timeout=5)
        break
    except OSError:
        time.sleep(0.1)
s.sendall(b"GET /report.txt HTTP/1.1\r\nHost: localhost\r\nAccept-Encoding: gzip\r\n"
          b"TE: trailers\r\nConnection: close\r\n\r\n")
data = b""
while True:
    part = s.recv(65536)
    if not part:
        break
    data += part
s.close()
open(out, "wb").write(data)
shutil.copyfile(doc, body)
head = data.split(b"\r\n\r\n", 1)[0].decode()
print(head)
assert head.startswith("HTTP/1.1 200"), "no 200 response"
assert "Transfer-Encoding: chunked" in head and "Content-Encoding: gzip" in head, "not a chunked gzip response"
PY
echo "captured $(wc -c < "$here/sample-response.http") bytes"
