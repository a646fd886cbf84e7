// A live peer: nginx serves files of several sizes on 127.0.0.1 with gzip
// and the chunked transfer coding on; each raw response, fetched over a plain
// socket, is decoded by our chain (memory -> buffered -> chunked -> gzip) to
// the file's exact bytes. nginx is the program named by $ZUM_NGINX (the test
// command unpacks Debian's package privately, scripts/fetch-nginx), else one
// on PATH or in /usr/sbin; the test is skipped where there is none.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cctype>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "RVKCore.h"
#include "TestFiles.h"
#include "TestStreams.h"
#include "ZUMStreams.h"

namespace {

using Clock = std::chrono::steady_clock;

// A socket connected to 127.0.0.1:port (port 0: bound to a free port and not
// connected), with 10-second send and receive limits; -1 on failure.
int loopbackSocket(int port, int* boundPort = nullptr)
{
    int fd = socket(AF_INET, SOCK_STREAM, 0);
    timeval limit{10, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(static_cast<std::uint16_t>(port));
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof addr;
    auto* any = reinterpret_cast<sockaddr*>(&addr);
    bool ok = fd >= 0 && (port ? connect(fd, any, len) == 0
                               : bind(fd, any, len) == 0 && getsockname(fd, any, &len) == 0);
    if (ok && boundPort) {
        *boundPort = ntohs(addr.sin_port);
    }
    if (!ok && fd >= 0) {
        close(fd);
    }
    return ok ? fd : -1;
}

// nginx from a private prefix on a free port, with gzip and chunked transfer
// on and small gzip buffers (so bodies come in several chunks); stopped by
// the destructor whatever happens.
class NginxServer {
public:
    NginxServer(std::string const& program, TempDir const& dir) : m_dir(dir)
    {
        int fd = loopbackSocket(0, &m_port);
        if (fd >= 0) {
            close(fd);
        }
        std::string p = dir.path();
        dir.write("nginx.conf", "pid " + p + "/nginx.pid;\nerror_log " + p + "/error.log;\n"
                  "events { worker_connections 32; }\nhttp {\n  access_log off;\n"
                  "  client_body_temp_path " + p + "/tmp;\n  proxy_temp_path " + p + "/tmp;\n"
                  "  fastcgi_temp_path " + p + "/tmp;\n  uwsgi_temp_path " + p + "/tmp;\n"
                  "  scgi_temp_path " + p + "/tmp;\n  default_type text/plain;\n"
                  "  sendfile off;\n  gzip on;\n  gzip_min_length 0;\n  gzip_types *;\n"
                  "  gzip_buffers 4 1k;\n  chunked_transfer_encoding on;\n"
                  "  server { listen 127.0.0.1:" + std::to_string(m_port) + "; root " + p + "/html; }\n}\n");
        m_command = shellQuoted(program) + " -p " + shellQuoted(p + "/") + " -c " + shellQuoted(dir.file("nginx.conf")) +
                    " -e " + shellQuoted(dir.file("error.log"));
        m_started = m_port != 0 && runCommand(m_command + " 2>/dev/null");
    }
    ~NginxServer()
    {
        if (m_started) {
            runCommand(m_command + " -s stop 2>/dev/null");
        }
    }

    // Whether nginx accepts connections within 10 seconds.
    bool answering() const
    {
        for (auto deadline = Clock::now() + std::chrono::seconds(10); m_started && Clock::now() < deadline;) {
            int fd = loopbackSocket(m_port);
            if (fd >= 0) {
                close(fd);
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return false;
    }

    // The whole raw response to a GET of `path` with gzip accepted.
    std::string fetch(std::string const& path) const
    {
        std::string request = "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n"
                              "Accept-Encoding: gzip\r\nConnection: close\r\n\r\n";
        std::string response;
        int fd = loopbackSocket(m_port);
        if (fd >= 0 && send(fd, request.data(), request.size(), MSG_NOSIGNAL) == ssize_t(request.size())) {
            char buf[16384];
            for (ssize_t n; response.size() < (16u << 20) && (n = recv(fd, buf, sizeof buf, 0)) > 0;) {
                response.append(buf, static_cast<std::size_t>(n));
            }
        }
        if (fd >= 0) {
            close(fd);
        }
        return response;
    }

    std::string errors() const { return readFile(m_dir.file("error.log")); }

private:
    TempDir const& m_dir;
    std::string m_command;
    int m_port = 0;
    bool m_started = false;
};

// Mixed text: words, markup, digits, UTF-8, CR LF and LF line ends.
std::string mixedText(std::size_t size)
{
    static char const* const pieces[] = {"stream ", "<b>chunk</b> ", "gzip & deflate ", "0123456789 ",
                                         "caf\xc3\xa9 ", "\r\n", "\n", "\"quoted\" ", "\t"};
    std::string text;
    for (unsigned x = 12345; text.size() < size;) {
        x = x * 1103515245u + 12345u;
        text += pieces[(x >> 16) % 9];
    }
    text.resize(size);
    return text;
}

}  // namespace

TEST(NginxPeer, DecodesGzipChunkedResponsesToTheFilesBytes)
{
    char const* named = std::getenv("ZUM_NGINX");
    std::string program = named && *named ? named
                        : haveProgram("nginx")                  ? "nginx"
                        : access("/usr/sbin/nginx", X_OK) == 0 ? "/usr/sbin/nginx"
                                                                : "";
    if (program.empty()) {
        GTEST_SKIP() << "no nginx (scripts/fetch-nginx unpacks one; the test command sets "
                        "ZUM_NGINX to it): the live-peer test does not run";
    }
    ASSERT_TRUE(program.find('/') == std::string::npos || access(program.c_str(), X_OK) == 0) << program;
    TempDir dir;
    for (char const* sub : {"", "/html", "/tmp"}) {
        std::string d = dir.path() + sub;
        mkdir(d.c_str(), 0755);
        ASSERT_EQ(chmod(d.c_str(), 0755), 0) << d;  // the worker drops root
    }
    std::size_t const sizes[] = {0, 1024, 100 * 1024, 1024 * 1024};
    for (std::size_t size : sizes) {
        std::string path = dir.write("html/" + std::to_string(size), mixedText(size));
        ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    }
    NginxServer server(program, dir);
    ASSERT_TRUE(server.answering()) << "nginx did not start: " << server.errors();

    for (std::size_t size : sizes) {
        SCOPED_TRACE(size);
        std::string response = server.fetch("/" + std::to_string(size));
        ZUMMemoryInputStream raw(response.data(), static_cast<int>(response.size()));
        ZUMBufferedInputStream bis(raw, 4096);
        RVKByteBuffer line(256, 256);
        ASSERT_GT(bis.readline(line), 2);
        EXPECT_EQ(std::string(line.str()).rfind("HTTP/1.1 200", 0), 0u) << line.str();
        std::string headers;
        for (line.reset(); bis.readline(line) > 2; line.reset()) {
            for (char* c = line.str(); *c; ++c) {
                *c = static_cast<char>(std::tolower(static_cast<unsigned char>(*c)));
            }
            headers += line.str();
        }
        ASSERT_NE(headers.find("transfer-encoding: chunked\r\n"), std::string::npos) << headers;
        ASSERT_NE(headers.find("content-encoding: gzip\r\n"), std::string::npos) << headers;
        if (size >= 100 * 1024) {  // several chunks: a second size line follows the first chunk
            EXPECT_LT(std::strtoul(response.c_str() + response.find("\r\n\r\n") + 4, nullptr, 16), response.size() / 2);
        }

        ZUMChunkedInputStream body(bis);
        ZUMGZIPInputStream gunzip(body);
        EXPECT_TRUE(drain(gunzip, 16384, Form::Array) == readFile(dir.file("html/" + std::to_string(size))));
        // The member fills the body, and the body ends in the empty trailer.
        gunzip.unWrap();
        EXPECT_EQ(body.read(), -1);
        line.reset();
        EXPECT_EQ(bis.readline(line), 2);
        EXPECT_EQ(bis.read(), -1);
    }
}
