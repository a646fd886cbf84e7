#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "AllocationCounter.h"
#include "GZIPTestSupport.h"
#include "TestStreams.h"

using namespace gziptest;

namespace {

unsigned long const kText = 0x91fdd700UL;

std::string const kHeader("\x1F\x8B\x08\x00\x00\x00\x00\x00\x00\xFF", 10);

// Writes `content` through a gzip stream in writes of `piece` bytes and
// finishes the member; returns the downstream's record.
RecordingOutputStream compress(std::string const& content, std::size_t piece)
{
    RecordingOutputStream down;
    ZUMGZIPOutputStream gz(down);
    std::size_t at = 0;
    do {
        std::size_t n = std::min(piece, content.size() - at);
        gz.write(content.data() + at, static_cast<int>(n));
        at += n;
    } while (at < content.size());
    gz.finish();
    return down;
}

std::string decodeWithOurReader(std::string const& member)
{
    ZUMMemoryInputStream memory(member.data(), static_cast<int>(member.size()));
    ZUMGZIPInputStream gz(memory);
    return readToEnd(gz, 8192);
}

bool haveGzipProgram()
{
    return std::system("gzip --version >/dev/null 2>&1") == 0;
}

// Decodes `member` with the gzip program (all members of the file).
std::string decodeWithGzipProgram(std::string const& member)
{
    char in_path[] = "/tmp/zum-gzip-in-XXXXXX";
    int fd = mkstemp(in_path);
    EXPECT_GE(fd, 0);
    FILE* in = fdopen(fd, "wb");
    std::fwrite(member.data(), 1, member.size(), in);
    std::fclose(in);
    std::string out_path = std::string(in_path) + ".out";
    std::string command = "gzip -dc < " + std::string(in_path) + " > " + out_path;
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    std::string decoded = readFile(out_path);
    std::remove(in_path);
    std::remove(out_path.c_str());
    return decoded;
}

// A recording stream that throws the text exception from its n-th write (1
// is the first), or from flush() when n is 0.
class ThrowingOutputStream : public RecordingOutputStream {
public:
    ThrowingOutputStream(int n, char const* text) : m_n(n), m_text(text) {}
    void write(char const* bytes, int count) override
    {
        if (++m_writes == m_n) {
            throw m_text;
        }
        RecordingOutputStream::write(bytes, count);
    }
    void flush() override
    {
        if (m_n == 0) {
            throw m_text;
        }
        RecordingOutputStream::flush();
    }

private:
    int m_n;
    char const* m_text;
    int m_writes = 0;
};

}  // namespace

// Members of every size decode with the gzip program and with our reader,
// and the deflate data between header and trailer is byte-identical to
// zlib's own raw deflate with the same parameters, whether the content is
// written in one call or in pieces.
TEST(GZIPOutputStream, MembersMatchZlibAndDecodeEverywhere)
{
    bool gzip_program = haveGzipProgram();
    for (std::size_t size : {0u, 1u, 16383u, 16384u, 16385u, 40000u, 1u << 20}) {
        SCOPED_TRACE(size);
        std::string content = mixedData(size, static_cast<std::uint32_t>(size));
        std::string reference = zlibDeflate(content, -15);
        for (std::size_t piece : {std::size_t(1u << 21), std::size_t(4999)}) {
            SCOPED_TRACE(piece);
            RecordingOutputStream down = compress(content, piece);
            std::string member = down.all();
            ASSERT_GE(member.size(), 18u);
            EXPECT_EQ(member.substr(0, 10), kHeader);
            EXPECT_EQ(member.substr(10, member.size() - 18), reference);
            EXPECT_EQ(decodeWithOurReader(member), content);
            if (gzip_program && piece > size) {
                EXPECT_EQ(decodeWithGzipProgram(member), content);
            }
        }
    }
    if (!gzip_program) {
        GTEST_SKIP() << "no gzip program: decoding by gzip not checked";
    }
}

// Header in one write, then only whole 16,384-byte blocks during write();
// at finish() the waiting bytes, the rest of the deflate data, the CRC-32
// and the length in separate writes, then one flush.
TEST(GZIPOutputStream, DownstreamWriteOrder)
{
    std::string content = noiseData(40000, 11);
    RecordingOutputStream down;
    ZUMGZIPOutputStream gz(down);
    gz.write(content.data(), 20000);
    gz.write(content.data() + 20000, 20000);
    ASSERT_GE(down.writes.size(), 2u);
    EXPECT_EQ(down.writes[0], kHeader);
    for (std::size_t i = 1; i < down.writes.size(); ++i) {
        EXPECT_EQ(down.writes[i].size(), 16384u);
    }
    std::size_t during_write = down.writes.size();
    EXPECT_EQ(down.flushes, 0);

    gz.finish();
    ASSERT_GE(down.writes.size(), during_write + 3);
    for (std::size_t i = during_write; i < down.writes.size() - 2; ++i) {
        EXPECT_GT(down.writes[i].size(), 0u);
        EXPECT_LE(down.writes[i].size(), 16384u);
    }
    uLong crc = crc32(0L, reinterpret_cast<Bytef const*>(content.data()), 40000);
    std::string crc_bytes, length_bytes;
    for (int i = 0; i < 4; ++i) {
        crc_bytes += static_cast<char>((crc >> (8 * i)) & 0xFF);
        length_bytes += static_cast<char>((40000u >> (8 * i)) & 0xFF);
    }
    EXPECT_EQ(down.writes[down.writes.size() - 2], crc_bytes);
    EXPECT_EQ(down.writes.back(), length_bytes);
    EXPECT_EQ(down.flushes, 1);
    EXPECT_EQ(down.closes, 0);
    EXPECT_EQ(decodeWithOurReader(down.all()), content);
}

TEST(GZIPOutputStream, SmallMembersExactBytes)
{
    // An empty write opens a member: header, the empty deflate data 03 00,
    // and a zero trailer.
    RecordingOutputStream empty;
    {
        ZUMGZIPOutputStream gz(empty);
        gz.write(nullptr, 0);
        gz.finish();
    }
    EXPECT_EQ(empty.all(), kHeader + std::string("\x03\x00", 2) + std::string(8, '\0'));
    EXPECT_EQ(empty.writes.size(), 4u);

    RecordingOutputStream abc;
    ZUMGZIPOutputStream gz(abc);
    gz.write("abc", 3);
    gz.finish();
    std::string member = abc.all();
    EXPECT_EQ(member.substr(member.size() - 8), std::string("\xC2\x41\x24\x35\x03\x00\x00\x00", 8));
}

TEST(GZIPOutputStream, FinishAndDestruction)
{
    // Without a write nothing at all reaches the downstream.
    RecordingOutputStream untouched;
    {
        ZUMGZIPOutputStream gz(untouched);
        gz.finish();
    }
    EXPECT_TRUE(untouched.writes.empty());
    EXPECT_EQ(untouched.flushes, 0);

    std::string content = mixedData(5000, 2);
    RecordingOutputStream finished;
    {
        ZUMGZIPOutputStream gz(finished);
        gz.write(content.data(), static_cast<int>(content.size()));
        gz.flush();
        gz.close();
        EXPECT_EQ(finished.writes.size(), 1u);  // flush and close write nothing
        gz.finish();
        std::size_t writes = finished.writes.size();
        gz.finish();
        EXPECT_EQ(finished.writes.size(), writes);
    }
    EXPECT_EQ(finished.flushes, 1);

    // Destroying an open, wrapped stream completes the member as finish().
    RecordingOutputStream destroyed;
    {
        ZUMGZIPOutputStream gz(destroyed);
        gz.write(content.data(), static_cast<int>(content.size()));
    }
    EXPECT_EQ(destroyed.writes, finished.writes);
    EXPECT_EQ(destroyed.flushes, 1);

    // Unwrapped, destruction discards the open member.
    RecordingOutputStream dropped;
    {
        ZUMGZIPOutputStream gz(dropped);
        gz.write(content.data(), static_cast<int>(content.size()));
        gz.unWrap();
    }
    EXPECT_EQ(dropped.writes.size(), 1u);
    EXPECT_EQ(dropped.flushes, 0);
}

// unWrap leaves the member open; after wrap the rest of it goes to the new
// downstream.
TEST(GZIPOutputStream, MemberContinuesOnNewDownstream)
{
    std::string content = mixedData(30000, 4);
    RecordingOutputStream first, second;
    ZUMGZIPOutputStream gz(first);
    gz.write(content.data(), 15000);
    gz.unWrap();
    EXPECT_EQ(first.flushes, 0);
    EXPECT_THROW(gz.write("x", 1), RVKIllegalStateError);
    gz.finish();  // unwrapped: nothing
    gz.wrap(second);
    gz.write(content.data() + 15000, 15000);
    gz.finish();
    EXPECT_EQ(second.flushes, 1);
    EXPECT_EQ(decodeWithOurReader(first.all() + second.all()), content);
}

// A write after finish() opens a new member that the next finish(), or the
// destructor, completes.
TEST(GZIPOutputStream, WriteAfterFinishStartsNewMember)
{
    RecordingOutputStream down;
    std::size_t first_size = 0;
    {
        ZUMGZIPOutputStream gz(down);
        gz.write("first,", 6);
        gz.finish();
        first_size = down.all().size();
        gz.write("second", 6);
    }
    std::string all = down.all();
    EXPECT_EQ(down.flushes, 2);
    EXPECT_EQ(decodeWithOurReader(all.substr(0, first_size)), "first,");
    EXPECT_EQ(decodeWithOurReader(all.substr(first_size)), "second");
    if (haveGzipProgram()) {
        EXPECT_EQ(decodeWithGzipProgram(all), "first,second");
    }
}

TEST(GZIPOutputStream, Misuse)
{
    ZUMGZIPOutputStream unwrapped;
    try {
        unwrapped.write("x", 1);
        FAIL();
    } catch (RVKIllegalStateError const& e) {
        EXPECT_STREQ(e.getBackTraceEntry(0).method,
                     "void ZUMGZIPOutputStream::write( const char *bytes, int count )");
    }
    try {
        unwrapped.do_flush(Z_FINISH);
        FAIL();
    } catch (RVKAssertError const& e) {
        EXPECT_STREQ(e.getText(), "RVK_ASSERT(m_state);");
    }
    try {
        unwrapped.writeInt32(1);
        FAIL();
    } catch (RVKAssertError const& e) {
        EXPECT_STREQ(e.getText(), "RVK_ASSERT(p_downstream);");
    }
    unwrapped.finish();

    RecordingOutputStream down;
    ZUMGZIPOutputStream gz(down);
    EXPECT_THROW(gz.write("x", -1), RVKAssertError);
    EXPECT_THROW(gz.write(nullptr, 1), RVKAssertError);
    EXPECT_TRUE(down.writes.empty());
}

// A text exception of the downstream, wherever it is thrown, becomes a
// ZUMIOException with errno, the text message and the text, raised with
// the method text of the place.
TEST(GZIPOutputStream, DownstreamTextExceptions)
{
    std::string content = noiseData(40000, 8);
    // Count the downstream writes: the header and the full blocks during
    // write(), then those of finish(), the last two being CRC-32 and length.
    RecordingOutputStream dry;
    ZUMGZIPOutputStream counter(dry);
    counter.write(content.data(), 20000);
    counter.write(content.data() + 20000, 20000);
    int during_write = static_cast<int>(dry.writes.size());
    counter.finish();
    int total = static_cast<int>(dry.writes.size());
    ASSERT_GE(during_write, 2);

    struct Case {
        int throw_at;  // n-th downstream write (1: the header), 0 for flush()
        bool in_finish;
        char const* method;
    };
    char const* write_method = "void ZUMGZIPOutputStream::write( const char *bytes, int count )";
    std::vector<Case> const cases = {
        {1, false, write_method},
        {2, false, write_method},
        {during_write + 1, true, "int ZUMGZIPOutputStream::do_flush ( int )"},
        {total - 1, true, "ZUMGZIPOutputStream::finish"},
        {total, true, "ZUMGZIPOutputStream::finish"},
        {0, true, "ZUMGZIPOutputStream::finish"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.throw_at);
        ThrowingOutputStream down(c.throw_at, "disk full");
        ZUMGZIPOutputStream gz(down);
        auto action = [&] {
            gz.write(content.data(), 20000);
            gz.write(content.data() + 20000, 20000);
            if (c.in_finish) {
                gz.finish();
            }
        };
        errno = 28;
        ZUMIOException e = expectIO(action, 28, kText);
        ASSERT_EQ(e.getMessageCount(), 2u);
        EXPECT_EQ(messageText(e, 1), "disk full");
        ASSERT_EQ(e.getBackTraceSize(), 1u);
        EXPECT_STREQ(e.getBackTraceEntry(0).method, c.method);
        gz.unWrap();  // the destructor then discards the member
    }

    // Other exceptions of the downstream pass unchanged.
    struct IOFailing : RecordingOutputStream {
        void write(char const*, int) override
        {
            RVK_THROW(ZUMIOException(static_cast<RVKSeverity>(1), 9L), "IOFailing::write");
        }
    } failing;
    ZUMGZIPOutputStream gz(failing);
    try {
        gz.write("x", 1);
        FAIL();
    } catch (ZUMIOException const& e) {
        EXPECT_EQ(e.getCode(), 9);
        EXPECT_EQ(e.getBackTraceSize(), 1u);
    }
    gz.unWrap();
}

// After the header write failed the member is not open; the next write opens
// it again from the start and the result is a whole member.
TEST(GZIPOutputStream, FailuresOfTheDownstreamLeaveAUsableStream)
{
    ThrowingOutputStream down(1, "busy");
    ZUMGZIPOutputStream gz(down);
    EXPECT_THROW(gz.write("abc", 3), ZUMIOException);
    EXPECT_TRUE(down.writes.empty());
    gz.write("abc", 3);
    gz.finish();
    EXPECT_EQ(decodeWithOurReader(down.all()), "abc");

    // A destructor that finishes into a failing downstream swallows the
    // failure.
    ThrowingOutputStream failing(2, "gone");
    {
        ZUMGZIPOutputStream open(failing);
        open.write("abc", 3);
    }
    EXPECT_EQ(failing.writes.size(), 1u);
}
