// A live peer: nginx serves files of several sizes on 127.0.0.1 with gzip
// and the chunked transfer coding on (tests/data/nginx/nginx.conf); each raw
// response, fetched over a plain socket, is decoded by our chain (memory ->
// buffered -> chunked -> gzip) to the file's exact bytes. nginx is the program
// named by $ZUM_NGINX (the test command unpacks Debian's package privately,
// scripts/fetch-nginx), else one on PATH or in /usr/sbin; the test is skipped
// where there is none.

#include <arpa/inet.h>
#include <signal.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <thread>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

// A socket on 127.0.0.1 with 10-second send and receive limits, connected to
// `port`, or with `port` 0 bound to a free port, which is stored in `port`;
// -1 on failure.
int loopbackSocket(int& port)
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
    if (port ? connect(fd, any, len) != 0 : bind(fd, any, len) != 0 || getsockname(fd, any, &len) != 0) {
        close(fd);
        return -1;
    }
    port = ntohs(addr.sin_port);
    return fd;
}

// The whole raw response from 127.0.0.1:port to a GET of `path` with gzip
// accepted, trying to connect for 10 seconds while the server starts; "" when
// it never answers.
std::string fetch(int port, std::string const& path)
{
    std::string request = "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n"
                          "Accept-Encoding: gzip\r\nConnection: close\r\n\r\n";
    std::string response;
    int fd = loopbackSocket(port);
    for (int tries = 0; fd < 0 && tries < 500; ++tries, fd = loopbackSocket(port)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    if (fd >= 0 && send(fd, request.data(), request.size(), MSG_NOSIGNAL) == ssize_t(request.size())) {
        char buf[16384];
        for (ssize_t n; response.size() < (16u << 20) && (n = recv(fd, buf, sizeof buf, 0)) > 0;) {
            response.append(buf, static_cast<std::size_t>(n));
        }
    }
    close(fd);
    return response;
}

// Stops the nginx started with `command` when the test ends, whatever happens,
// and waits (up to 10 seconds) for its master process, named in `pidFile`, to
// exit, so that nothing writes to the folder while it is removed.
struct NginxStopper {
    std::string command;
    std::string pidFile;
    ~NginxStopper()
    {
        long pid = std::strtol(readFile(pidFile).c_str(), nullptr, 10);
        runCommand(command + " -s stop 2>/dev/null");
        for (int tries = 0; pid > 0 && tries < 500 && running(static_cast<pid_t>(pid)); ++tries) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
    // Whether `pid` is a live process (a zombie awaiting its parent is not).
    static bool running(pid_t pid)
    {
        std::string stat = readFile("/proc/" + std::to_string(pid) + "/stat");
        std::size_t end = stat.rfind(')');
        return kill(pid, 0) == 0 && !(end != std::string::npos && stat.compare(end, 3, ") Z") == 0);
    }
};

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
        std::string path = dir.write("html/" + std::to_string(size), mixedData(size, 3));
        ASSERT_EQ(chmod(path.c_str(), 0644), 0);
    }
    int port = 0;
    close(loopbackSocket(port));
    std::string conf = dataFile("nginx/nginx.conf");
    for (auto const& [key, value] : {std::pair<std::string, std::string>{"@PREFIX@", dir.path()},
                                     {"@PORT@", std::to_string(port)}}) {
        for (std::size_t at; (at = conf.find(key)) != std::string::npos;) {
            conf.replace(at, key.size(), value);
        }
    }
    std::string command = shellQuoted(program) + " -p " + shellQuoted(dir.path() + "/") + " -c " +
                          shellQuoted(dir.write("nginx.conf", conf)) + " -e " + shellQuoted(dir.file("error.log"));
    ASSERT_TRUE(port != 0 && runCommand(command + " 2>/dev/null")) << "nginx did not start";
    NginxStopper stopper{command, dir.file("nginx.pid")};

    for (std::size_t size : sizes) {
        SCOPED_TRACE(size);
        std::string response = fetch(port, "/" + std::to_string(size));
        ZUMMemoryInputStream raw(response.data(), static_cast<int>(response.size()));
        ZUMBufferedInputStream bis(raw, 4096);
        RVKByteBuffer line(256, 256);
        ASSERT_GT(bis.readline(line), 2) << readFile(dir.file("error.log"));
        EXPECT_EQ(std::string(line.str()).rfind("HTTP/1.1 200", 0), 0u) << line.str();
        std::string headers;
        for (line.reset(); bis.readline(line) > 2; line.reset()) {
            headers += str(line);
        }
        std::transform(headers.begin(), headers.end(), headers.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        ASSERT_NE(headers.find("transfer-encoding: chunked\r\n"), std::string::npos) << headers;
        ASSERT_NE(headers.find("content-encoding: gzip\r\n"), std::string::npos) << headers;
        if (size >= 100 * 1024) {  // several chunks: a second size line follows the first chunk
            EXPECT_LT(std::strtoul(response.c_str() + response.find("\r\n\r\n") + 4, nullptr, 16), response.size() / 2);
        }
        // The member fills the body, and the body ends in the empty trailer.
        std::string file = readFile(dir.file("html/" + std::to_string(size)));
        EXPECT_TRUE(readChunkedBody(bis, true, 16384, Form::Array) == file + "|");
        EXPECT_EQ(drain(bis, 0, Form::Line), "\r\n");
    }
}
