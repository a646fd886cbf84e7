// A live peer: nginx serves files of several sizes on 127.0.0.1 with gzip
// and the chunked transfer coding on; each raw response, fetched over a plain
// socket, is decoded by our chain (memory -> buffered -> chunked -> gzip) to
// the file's exact bytes. Skipped where nginx is not installed (Debian's
// nginx-light provides it).

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
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
#include "ZUMStreams.h"

namespace {

using Clock = std::chrono::steady_clock;

// The nginx program, or an empty string.
std::string findNginx()
{
    for (char const* candidate : {"/usr/sbin/nginx", "/usr/bin/nginx", "/usr/local/sbin/nginx"}) {
        if (access(candidate, X_OK) == 0) {
            return candidate;
        }
    }
    return std::string();
}

// A TCP port on 127.0.0.1 that was free a moment ago, or 0.
int freePort()
{
    int fd = socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0) {
        return 0;
    }
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof addr;
    int port = 0;
    if (bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0
        && getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len) == 0) {
        port = ntohs(addr.sin_port);
    }
    close(fd);
    return port;
}

// A socket connected to 127.0.0.1:port with 10-second send and receive
// limits, or -1.
int connectTo(int port)
{
    int fd = socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0) {
        return -1;
    }
    timeval limit{10, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(static_cast<std::uint16_t>(port));
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

// nginx run from a private prefix, stopped (and waited for) by the
// destructor whatever happens. Its worker drops to an unprivileged user when
// the test runs as root, so the prefix is world-readable.
class NginxServer {
public:
    NginxServer(std::string program, TempDir const& dir) : m_program(std::move(program)), m_dir(dir) {}
    ~NginxServer() { stop(); }
    NginxServer(NginxServer const&) = delete;
    NginxServer& operator=(NginxServer const&) = delete;

    // Starts nginx on a free port; tries three ports. Returns whether it
    // answers; `why` tells what went wrong otherwise.
    bool start(std::string& why)
    {
        for (int attempt = 0; attempt < 3; ++attempt) {
            m_port = freePort();
            if (m_port == 0) {
                why = "no free port on 127.0.0.1";
                continue;
            }
            writeConfig();
            if (launch() && waitUntilAnswering()) {
                return true;
            }
            stop();
            why = "nginx did not start: " + readFile(m_dir.file("logs/error.log"));
        }
        return false;
    }

    int port() const { return m_port; }

    void stop()
    {
        if (m_pid <= 0) {
            return;
        }
        kill(m_pid, SIGTERM);  // fast shutdown: the master ends its worker first
        if (!waitExit(std::chrono::seconds(10))) {
            kill(-m_pid, SIGKILL);  // the whole process group nginx runs in
            waitExit(std::chrono::seconds(10));
        }
        m_pid = -1;
    }

private:
    void writeConfig() const
    {
        std::string p = m_dir.path();
        std::string conf =
            "daemon off;\n"
            "master_process on;\n"
            "worker_processes 1;\n"
            "error_log " + p + "/logs/error.log;\n"
            "pid " + p + "/logs/nginx.pid;\n"
            "events { worker_connections 32; }\n"
            "http {\n"
            "  access_log off;\n"
            "  client_body_temp_path " + p + "/tmp/body;\n"
            "  proxy_temp_path " + p + "/tmp/proxy;\n"
            "  fastcgi_temp_path " + p + "/tmp/fastcgi;\n"
            "  uwsgi_temp_path " + p + "/tmp/uwsgi;\n"
            "  scgi_temp_path " + p + "/tmp/scgi;\n"
            "  default_type text/plain;\n"
            "  sendfile off;\n"
            "  gzip on;\n"
            "  gzip_min_length 0;\n"
            "  gzip_types *;\n"
            "  gzip_buffers 4 1k;\n"
            "  chunked_transfer_encoding on;\n"
            "  server {\n"
            "    listen 127.0.0.1:" + std::to_string(m_port) + ";\n"
            "    root " + p + "/html;\n"
            "  }\n"
            "}\n";
        m_dir.write("nginx.conf", conf);
    }

    bool launch()
    {
        std::string prefix = m_dir.path() + "/";
        std::string conf = m_dir.file("nginx.conf");
        std::string errors = m_dir.file("logs/error.log");
        std::vector<char*> argv = {const_cast<char*>(m_program.c_str()), const_cast<char*>("-p"),
                                   prefix.data(), const_cast<char*>("-c"), conf.data(),
                                   const_cast<char*>("-e"), errors.data(), nullptr};
        m_pid = fork();
        if (m_pid == 0) {
            setpgid(0, 0);
            int null = open("/dev/null", O_RDWR);
            if (null >= 0) {
                dup2(null, 0);
                dup2(null, 1);
                dup2(null, 2);
            }
            execv(argv[0], argv.data());
            _exit(127);
        }
        return m_pid > 0;
    }

    // Polls for up to 10 seconds until a connection is accepted; false when
    // nginx exits or the time runs out.
    bool waitUntilAnswering()
    {
        auto deadline = Clock::now() + std::chrono::seconds(10);
        while (Clock::now() < deadline) {
            int status;
            if (waitpid(m_pid, &status, WNOHANG) == m_pid) {
                m_pid = -1;
                return false;
            }
            int fd = connectTo(m_port);
            if (fd >= 0) {
                close(fd);
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return false;
    }

    bool waitExit(Clock::duration limit)
    {
        auto deadline = Clock::now() + limit;
        while (Clock::now() < deadline) {
            int status;
            pid_t r = waitpid(m_pid, &status, WNOHANG);
            if (r == m_pid || r < 0) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

    std::string m_program;
    TempDir const& m_dir;
    pid_t m_pid = -1;
    int m_port = 0;
};

// The whole response to a GET of `path` with gzip accepted, read until the
// server closes the connection (at most 30 seconds and 16 MB).
std::string fetch(int port, std::string const& path)
{
    int fd = connectTo(port);
    if (fd < 0) {
        return std::string();
    }
    std::string request = "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n"
                          "Accept-Encoding: gzip\r\nConnection: close\r\n\r\n";
    std::string response;
    if (send(fd, request.data(), request.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(request.size())) {
        auto deadline = Clock::now() + std::chrono::seconds(30);
        char buf[16384];
        while (Clock::now() < deadline && response.size() < (16u << 20)) {
            ssize_t n = recv(fd, buf, sizeof buf, 0);
            if (n <= 0) {
                break;
            }
            response.append(buf, static_cast<std::size_t>(n));
        }
    }
    close(fd);
    return response;
}

// Mixed text: words, markup, digits, UTF-8, CR LF and LF line ends.
std::string mixedText(std::size_t size)
{
    static char const* const pieces[] = {"stream ", "<b>chunk</b> ", "gzip & deflate ", "0123456789 ",
                                         "caf\xc3\xa9 ", "\r\n", "\n", "\"quoted\" ", "\t"};
    std::string text;
    unsigned x = 12345;
    while (text.size() < size) {
        x = x * 1103515245u + 12345u;
        text += pieces[(x >> 16) % 9];
    }
    text.resize(size);
    return text;
}

// The number of chunks in a chunked body, walked independently of the
// library (sizes only, no extensions are sent by nginx).
int countChunks(std::string const& response)
{
    std::size_t at = response.find("\r\n\r\n");
    if (at == std::string::npos) {
        return -1;
    }
    at += 4;
    int chunks = 0;
    for (;;) {
        std::size_t eol = response.find("\r\n", at);
        if (eol == std::string::npos) {
            return -1;
        }
        unsigned long size = std::strtoul(response.substr(at, eol - at).c_str(), nullptr, 16);
        if (size == 0) {
            return chunks;
        }
        ++chunks;
        at = eol + 2 + size + 2;
    }
}

std::string lower(std::string s)
{
    for (char& c : s) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return s;
}

}  // namespace

TEST(NginxPeer, DecodesGzipChunkedResponsesToTheFilesBytes)
{
    std::string nginx = findNginx();
    if (nginx.empty()) {
        GTEST_SKIP() << "nginx is not installed (Debian package nginx-light; scripts/install-deps "
                        "installs it): the live-peer test does not run";
    }

    TempDir dir;
    for (char const* sub : {"", "/html", "/logs", "/tmp"}) {
        std::string d = dir.path() + sub;
        mkdir(d.c_str(), 0755);
        ASSERT_EQ(chmod(d.c_str(), 0755), 0) << d;
    }
    struct File {
        char const* name;
        std::size_t size;
        int minChunks;
    };
    File const files[] = {{"empty.txt", 0, 1}, {"one-k.txt", 1024, 1}, {"hundred-k.txt", 100 * 1024, 2},
                          {"one-m.txt", 1024 * 1024, 2}};
    for (File const& f : files) {
        std::string path = dir.write("html/" + std::string(f.name), mixedText(f.size));
        ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    }

    NginxServer server(nginx, dir);
    std::string why;
    ASSERT_TRUE(server.start(why)) << why;

    for (File const& f : files) {
        SCOPED_TRACE(f.name);
        std::string response = fetch(server.port(), std::string("/") + f.name);
        ASSERT_FALSE(response.empty());
        EXPECT_GE(countChunks(response), f.minChunks);

        ZUMMemoryInputStream raw(response.data(), static_cast<int>(response.size()));
        ZUMBufferedInputStream bis(raw, 4096);
        RVKByteBuffer line(256, 256);
        ASSERT_GT(bis.readline(line), 2);
        EXPECT_EQ(std::string(line.str()).rfind("HTTP/1.1 200", 0), 0u) << line.str();
        bool chunked = false;
        bool gzipped = false;
        for (int i = 0; i < 100; ++i) {
            line.reset();
            int n = bis.readline(line);
            ASSERT_GT(n, 1);
            if (n == 2) {
                break;
            }
            std::string header = lower(line.str());
            chunked = chunked || header == "transfer-encoding: chunked\r\n";
            gzipped = gzipped || header == "content-encoding: gzip\r\n";
        }
        ASSERT_TRUE(chunked && gzipped) << "nginx sent neither chunked nor gzip";

        ZUMChunkedInputStream body(bis);
        ZUMGZIPInputStream gunzip(body);
        std::string decoded;
        char buf[16384];
        int n;
        for (int reads = 0; (n = gunzip.read(buf, sizeof buf)) != -1; ++reads) {
            ASSERT_LT(reads, 10000);
            decoded.append(buf, static_cast<std::size_t>(n));
        }
        EXPECT_EQ(decoded.size(), f.size);
        EXPECT_TRUE(decoded == readFile(dir.file("html/" + std::string(f.name))));

        // The member fills the body, and the body ends in the empty trailer.
        gunzip.unWrap();
        EXPECT_EQ(body.read(buf, sizeof buf), -1);
        line.reset();
        EXPECT_EQ(bis.readline(line), 2);
        EXPECT_EQ(bis.read(), -1);
    }
    server.stop();
}
