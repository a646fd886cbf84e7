// Lines, single bytes and framed block reads; plus the endpoints and filters
// not timed elsewhere, for their steady-state allocations.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <unistd.h>
#include <vector>

#include "BenchSupport.h"
#include "ZUMStreams.h"

namespace {

std::size_t const kLineText = 8u << 20;
std::size_t const kBytes = 4u << 20;
std::size_t const kPayload = 16u << 20;

// A temporary file of the payload, removed at exit; null if it cannot be made.
char const* payloadFile()
{
    static std::string path;
    if (path.empty()) {
        char name[] = "/tmp/zum_bench_XXXXXX";
        int fd = mkstemp(name);
        if (fd < 0) {
            return nullptr;
        }
        path = name;
        std::atexit([] { std::remove(path.c_str()); });
        std::string const& payload = wordText(kPayload);
        bool ok = write(fd, payload.data(), payload.size()) == static_cast<ssize_t>(payload.size());
        close(fd);
        if (!ok) {
            return nullptr;
        }
    }
    return path.c_str();
}

}  // namespace

// memory -> buffered (16 KiB), readline into one reused line buffer.
Pass readlineOurs()
{
    std::string const* text = &crlfLines(kLineText);
    auto line = std::make_shared<RVKByteBuffer>(256, 256);
    return [text, line](SteadyAllocations& allocs) {
        ZUMMemoryInputStream raw(text->data(), static_cast<int>(text->size()));
        ZUMBufferedInputStream bis(raw, kBlock);
        std::int64_t total = 0;
        // Warm-up: the first line that straddles two refills grows the
        // buffered stream's buffer once, beyond its refill size (the line's
        // start plus a whole refill); the window opens after that.
        int n = 0;
        for (int i = 0; i < 1000 && n != -1; ++i) {
            total += n;
            line->reset();
            n = bis.readline(*line);
        }
        allocs.open();
        std::uint64_t calls = 0;
        while (n != -1) {
            total += n;
            line->reset();
            n = bis.readline(*line);
            ++calls;
        }
        allocs.close(calls);
        return total;
    };
}

// std::getline over a std::istringstream of the same text (split at LF, so
// each line keeps its CR), into one reused std::string.
Pass readlineGetline()
{
    std::string const* text = &crlfLines(kLineText);
    auto in = std::make_shared<std::istringstream>(*text);
    auto line = std::make_shared<std::string>();
    line->reserve(256);
    return [in, line](SteadyAllocations&) {
        in->clear();
        in->seekg(0);
        std::int64_t total = 0;
        while (std::getline(*in, *line)) {
            total += static_cast<std::int64_t>(line->size()) + 1;
        }
        return total;
    };
}

// memory -> buffered (16 KiB), read() byte by byte.
Pass readByteOurs()
{
    std::string const* bytes = &wordText(kBytes);
    return [bytes](SteadyAllocations& allocs) {
        ZUMMemoryInputStream raw(bytes->data(), static_cast<int>(bytes->size()));
        ZUMBufferedInputStream bis(raw, kBlock);
        unsigned sum = 0;
        int c = bis.read();
        allocs.open();
        std::uint64_t calls = 0;
        while (c != -1) {
            sum += static_cast<unsigned>(c);
            c = bis.read();
            ++calls;
        }
        allocs.close(calls);
        benchmark::DoNotOptimize(sum);
        return static_cast<std::int64_t>(calls);
    };
}

// std::istream::get() over a std::istringstream of the same bytes.
Pass readByteIstream()
{
    std::string const* bytes = &wordText(kBytes);
    auto in = std::make_shared<std::istringstream>(*bytes);
    return [in](SteadyAllocations&) {
        in->clear();
        in->seekg(0);
        std::int64_t total = 0;
        unsigned sum = 0;
        for (int c = in->get(); c != std::char_traits<char>::eof(); c = in->get()) {
            sum += static_cast<unsigned>(c);
            ++total;
        }
        benchmark::DoNotOptimize(sum);
        return total;
    };
}

// memory -> chunked (16 KiB chunks, its own 16 KiB buffered stream), 16 KiB
// block reads.
Pass chunkedOurs()
{
    auto body = std::make_shared<std::string>(chunkedBody(wordText(kPayload), kBlock));
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [body, buf](SteadyAllocations& allocs) {
        ZUMMemoryInputStream raw(body->data(), static_cast<int>(body->size()));
        ZUMChunkedInputStream chunked(raw, kBlock);
        return drainBlocks(chunked, buf->data(), allocs);
    };
}

// The same through the strict chunked stream.
Pass strictChunkedOurs()
{
    auto body = std::make_shared<std::string>(chunkedBody(wordText(kPayload), kBlock));
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [body, buf](SteadyAllocations& allocs) {
        ZUMMemoryInputStream raw(body->data(), static_cast<int>(body->size()));
        ZUMStrictChunkedInputStream chunked(raw, kBlock);
        return drainBlocks(chunked, buf->data(), allocs);
    };
}

// memory -> buffered (16 KiB), 16 KiB block reads of the same payload.
Pass bufferedOurs()
{
    std::string const* payload = &wordText(kPayload);
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [payload, buf](SteadyAllocations& allocs) {
        ZUMMemoryInputStream raw(payload->data(), static_cast<int>(payload->size()));
        ZUMBufferedInputStream bis(raw, kBlock);
        return drainBlocks(bis, buf->data(), allocs);
    };
}

// memory -> block (its own 16 KiB buffered stream), one block of the whole
// payload.
Pass blockOurs()
{
    std::string const* payload = &wordText(kPayload);
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [payload, buf](SteadyAllocations& allocs) {
        ZUMMemoryInputStream raw(payload->data(), static_cast<int>(payload->size()));
        ZUMBlockInputStream block(raw, kBlock);
        block.resetBlockSize(static_cast<int>(payload->size()));
        return drainBlocks(block, buf->data(), allocs);
    };
}

// file (page cache) -> buffered (16 KiB), 16 KiB block reads.
Pass fileInput()
{
    char const* path = payloadFile();
    if (!path) {
        return nullptr;
    }
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [path, buf](SteadyAllocations& allocs) {
        ZUMFileInputStream file(path);
        ZUMBufferedInputStream bis(file, kBlock);
        return drainBlocks(bis, buf->data(), allocs);
    };
}

// 16 KiB writes to a file output stream on /dev/null.
Pass fileOutput()
{
    std::string const* payload = &wordText(kPayload);
    return [payload](SteadyAllocations& allocs) {
        ZUMFileOutputStream file("/dev/null", 0);
        return writePieces(file, *payload, kBlock, allocs, [&] { file.flush(); });
    };
}

// std::istringstream -> std input adapter -> buffered (16 KiB), block reads.
Pass stdInput()
{
    auto in = std::make_shared<std::istringstream>(wordText(kPayload));
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [in, buf](SteadyAllocations& allocs) {
        in->clear();
        in->seekg(0);
        ZUMStdInputStream std_in(*in);
        ZUMBufferedInputStream bis(std_in, kBlock);
        return drainBlocks(bis, buf->data(), allocs);
    };
}

// buffered output (16 KiB) -> std output adapter -> std::ostream on memory,
// 1 KiB writes.
Pass stdOutput()
{
    std::string const* payload = &wordText(kPayload);
    auto sink = std::make_shared<std::vector<char>>();
    sink->reserve(payload->size());
    return [payload, sink](SteadyAllocations& allocs) {
        sink->clear();
        VectorSinkBuf sbuf(*sink);
        std::ostream os(&sbuf);
        ZUMStdOutputStream std_out(os);
        ZUMBufferedOutputStream bos(std_out, kBlock);
        return writePieces(bos, *payload, 1024, allocs, [&] { bos.flush(); });
    };
}

// std::istream over our memory stream (ZUMInputStreamBuf), 16 KiB reads.
Pass streamBufInput()
{
    std::string const* payload = &wordText(kPayload);
    auto buf = std::make_shared<std::vector<char>>(kBlock);
    return [payload, buf](SteadyAllocations& allocs) {
        ZUMMemoryInputStream raw(payload->data(), static_cast<int>(payload->size()));
        ZUMInputStreamBuf sbuf(raw);
        std::istream in(&sbuf);
        return drainIstream(in, buf->data(), &allocs);
    };
}

// std::ostream over our memory output stream (ZUMOutputStreamBuf), 1 KiB
// writes.
Pass streamBufOutput()
{
    std::string const* payload = &wordText(kPayload);
    auto sink = std::make_shared<ZUMMemoryOutputStream>(static_cast<int>(payload->size()), kBlock);
    return [payload, sink](SteadyAllocations& allocs) {
        sink->reset();
        ZUMOutputStreamBuf sbuf(*sink);
        std::ostream os(&sbuf);
        return writePieces(os, *payload, 1024, allocs, [&] { os.flush(); });
    };
}
