#include <gtest/gtest.h>

#include <cerrno>

#include "TestFiles.h"
#include "TestStreams.h"

using namespace std::string_literals;

namespace {

std::string const k_header("\x1F\x8B\x08\x00\x00\x00\x00\x00\x00\xFF", 10);
std::string const k_write = "void ZUMGZIPOutputStream::write( const char *bytes, int count )";

// Writes `content` through a gzip stream in writes of `piece` bytes and
// finishes the member; returns everything written downstream.
std::string compress(std::string const& content, std::size_t piece = 1 << 30)
{
    RecordingOutputStream down;
    ZUMGZIPOutputStream gz(down);
    writeInPieces(gz, content, {piece});
    gz.finish();
    return down.all();
}

std::string decodeWithOurReader(std::string const& member)
{
    ZUMMemoryInputStream memory(member.data(), static_cast<int>(member.size()));
    ZUMGZIPInputStream gz(memory);
    return drain(gz, 8192);
}

}  // namespace

// Members of every size decode with the gzip program and with our reader,
// and the deflate data between header and trailer is byte-identical to
// zlib's own raw deflate with the same parameters, whether the content is
// written in one call or in pieces.
TEST(GZIPOutputStream, MembersMatchZlibAndDecodeEverywhere)
{
    bool gzip_program = haveProgram("gzip");
    TempDir dir;
    for (std::size_t size : {0u, 1u, 16383u, 16384u, 16385u, 40000u, 1u << 20}) {
        std::string content = mixedData(size, static_cast<unsigned>(size));
        std::string reference = zlibDeflate(content, -15);
        for (std::size_t piece : {std::size_t(1u << 21), std::size_t(4999)}) {
            std::string member = compress(content, piece);
            ASSERT_GE(member.size(), 18u);
            EXPECT_EQ(member.substr(0, 10), k_header);
            EXPECT_TRUE(member.substr(10, member.size() - 18) == reference) << size << " in " << piece;
            EXPECT_TRUE(decodeWithOurReader(member) == content) << size << " in " << piece;
            std::string file = dir.write("m.gz", member);
            EXPECT_TRUE(!gzip_program || piece < size ||
                        (runCommand("gzip -dc < " + shellQuoted(file) + " > " + shellQuoted(file + ".out")) &&
                         readFile(file + ".out") == content))
                << "gzip -d, " << size;
        }
    }
    if (!gzip_program) {
        GTEST_SKIP() << "no gzip program: decoding by gzip not checked";
    }
}

// The header in one write, then only whole 16,384-byte blocks during write();
// at finish() the waiting bytes, the rest of the deflate data, the CRC-32 and
// the length (as zlib's own member ends) in separate writes, then one flush.
TEST(GZIPOutputStream, DownstreamWriteOrder)
{
    std::string content = testBytes(40000, 11), zlib = zlibDeflate(content);
    RecordingOutputStream down;
    ZUMGZIPOutputStream gz(down);
    gz.write(content.data(), 20000);
    gz.write(content.data() + 20000, 20000);
    std::vector<std::size_t> sizes = down.sizes(), expected(sizes.size(), 16384);
    ASSERT_GE(sizes.size(), 2u);
    expected[0] = 10;
    EXPECT_EQ(sizes, expected);
    gz.finish();
    ASSERT_GE(down.writes.size(), sizes.size() + 3);
    for (std::size_t i = sizes.size(); i < down.writes.size() - 2; ++i) {
        EXPECT_TRUE(down.writes[i].size() > 0 && down.writes[i].size() <= 16384u);
    }
    EXPECT_EQ(down.writes[down.writes.size() - 2], zlib.substr(zlib.size() - 8, 4));
    EXPECT_EQ(down.writes.back(), zlib.substr(zlib.size() - 4));
    EXPECT_EQ(down.flushes, 1);
    EXPECT_EQ(decodeWithOurReader(down.all()), content);
}

// A member is opened by the first write (an empty one too) and completed by
// finish() or the destructor, not by flush() or close(); unwrapped, it stays
// open and goes on to the next downstream, or is discarded at destruction.
TEST(GZIPOutputStream, MembersOpenAtWriteAndEndAtFinishOrDestruction)
{
    RecordingOutputStream empty, destroyed, dropped, first, second;
    {
        ZUMGZIPOutputStream e(empty), d(destroyed), x(dropped);
        e.finish();  // nothing without a write
        e.write(nullptr, 0);
        e.finish();
        e.finish();
        d.write("abc", 3);
        d.flush();
        d.close();
        x.write("abc", 3);
        x.unWrap();
    }
    EXPECT_EQ(empty.writes, (std::vector<std::string>{k_header, "\x03\x00"s, std::string(4, '\0'), std::string(4, '\0')}));
    EXPECT_EQ(destroyed.all(), compress("abc"));
    EXPECT_EQ(destroyed.flushes + empty.flushes + dropped.flushes, 2);
    EXPECT_EQ(dropped.writes.size(), 1u);

    std::string content = mixedData(30000, 4);
    ZUMGZIPOutputStream gz(first);
    gz.write(content.data(), 15000);
    gz.unWrap();
    EXPECT_EQ(raised([&] { gz.write("x", 1); }), "RVKIllegalStateError() @" + k_write);
    gz.finish();  // unwrapped: nothing
    gz.wrap(second);
    gz.write(content.data() + 15000, 15000);
    gz.finish();
    gz.write("next", 4);  // after finish(), a write opens a new member
    gz.finish();
    EXPECT_EQ(first.flushes + second.flushes, 2);
    std::string all = first.all() + second.all();
    std::size_t next = all.size() - compress("next").size();
    EXPECT_TRUE(decodeWithOurReader(all.substr(0, next)) == content);
    EXPECT_EQ(decodeWithOurReader(all.substr(next)), "next");
}

// A text exception of the downstream, wherever it is thrown, becomes a
// ZUMIOException with errno, the text message and the text, raised with the
// method text of the place. After a failed
// header write the next write starts the member again.
TEST(GZIPOutputStream, DownstreamFailures)
{
    std::string content = testBytes(40000, 8);
    RecordingOutputStream dry;
    ZUMGZIPOutputStream counter(dry);
    counter.write(content.data(), 20000);
    counter.write(content.data() + 20000, 20000);
    int during_write = static_cast<int>(dry.writes.size());
    counter.finish();
    int total = static_cast<int>(dry.writes.size());
    struct Case { int throw_at; std::string method; } const cases[] = {  // n-th write (1: the header), 0: flush()
        {1, k_write}, {2, k_write}, {during_write + 1, "int ZUMGZIPOutputStream::do_flush ( int )"},
        {total - 1, "ZUMGZIPOutputStream::finish"}, {total, "ZUMGZIPOutputStream::finish"},
        {0, "ZUMGZIPOutputStream::finish"},
    };
    for (auto const& c : cases) {
        RecordingOutputStream down;
        down.failAt(c.throw_at, "disk full");
        ZUMGZIPOutputStream gz(down);
        EXPECT_EQ(raised([&] { errno = 28, gz.write(content.data(), 20000), gz.write(content.data() + 20000, 20000), gz.finish(); }),
                  "ZUMIOException(1,28) #91fdd700 'disk full' @" + c.method);
        gz.unWrap();  // the destructor then discards the member
    }
    RecordingOutputStream busy;
    busy.failAt(1, "busy");
    ZUMGZIPOutputStream again(busy);
    EXPECT_THROW(again.write("abc", 3), ZUMIOException);
    again.write("abc", 3);
    again.finish();
    EXPECT_EQ(busy.all(), compress("abc"));
    busy.failAt(2, "gone");
    ZUMGZIPOutputStream(busy).write("abc", 3);  // the destructor's finish fails; the failure is swallowed
}

TEST(GZIPOutputStream, Misuse)
{
    ZUMGZIPOutputStream unwrapped;
    EXPECT_EQ(raised([&] { unwrapped.write("x", 1); }), "RVKIllegalStateError() @" + k_write);
    EXPECT_EQ(raised([&] { unwrapped.do_flush(Z_FINISH); }), "RVKAssertError(RVK_ASSERT(m_state);) @-");
    EXPECT_EQ(raised([&] { unwrapped.writeInt32(1); }), "RVKAssertError(RVK_ASSERT(p_downstream);) @-");
    unwrapped.finish();
    RecordingOutputStream down;
    ZUMGZIPOutputStream gz(down);
    EXPECT_THROW(gz.write("x", -1), RVKAssertError);
    EXPECT_THROW(gz.write(nullptr, 1), RVKAssertError);
    EXPECT_TRUE(down.writes.empty());
}
