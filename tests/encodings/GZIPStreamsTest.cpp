#include <gtest/gtest.h>

#include <cerrno>
#include <sstream>

#include "TestFiles.h"
#include "TestStreams.h"

using namespace std::string_literals;

namespace {

std::string const k_header("\x1F\x8B\x08\x00\x00\x00\x00\x00\x00\xFF", 10);
std::string const k_write = "void ZUMGZIPOutputStream::write( const char *bytes, int count )";
std::string const k_read = "@ZUMGZIPInputStream::read";

// The rendering of a failure of the gzip input stream.
std::string failure(long code, char const* number)
{
    return "ZUMIOException(1," + std::to_string(code) + ") #" + number + " " + k_read;
}

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

// What our reader decodes from `member`, in reads of 8192.
std::string decodeWithOurReader(std::string const& member)
{
    ZUMMemoryInputStream memory(member.data(), static_cast<int>(member.size()));
    ZUMGZIPInputStream gz(memory);
    return drain(gz, 8192);
}

}  // namespace

// Members made by the gzip program and by Python's gzip and zlib modules
// (every combination of FEXTRA, FNAME, FCOMMENT and FHCRC, a wrong header
// CRC16 included) decode byte for byte in 7-byte upstream pieces that split
// the header and trailer across refills, which ask for 16384.
TEST(GZIPInputStream, DecodesMembersOfOtherProducersAndTheEmptyMember)
{
    std::istringstream list(dataFile("gzip/fixtures.txt"));
    int fixtures = 0;
    for (std::string member_name, content_name; list >> member_name >> content_name; ++fixtures) {
        std::string member = dataFile("gzip/" + member_name);
        std::string content = dataFile("gzip/" + content_name);
        ScriptedInputStream pieces(ScriptedInputStream::pieces(member, {7}));
        ZUMGZIPInputStream split(pieces);
        EXPECT_EQ(drain(split, 1000), content) << member_name;
        EXPECT_EQ(pieces.counts, std::vector<int>(pieces.counts.size(), 16384));
    }
    EXPECT_GE(fixtures, 26);

    // A read of 0 bytes on a fresh stream reads and checks the header (0, and
    // -1 in the buffer form); an empty member gives 0, then -1 on every read.
    std::string member = zlibDeflate("\xff\x00\xff\x7f\x80"s), empty = zlibDeflate("");
    ScriptedInputStream up({ScriptStep::data(member)}), none({ScriptStep::data(empty)});
    ZUMGZIPInputStream gz(up), gz_none(none);
    char c = 0;
    RVKByteBuffer buf;
    EXPECT_EQ(raised([&] { gz.read(nullptr, 1); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    EXPECT_THROW(gz.read(&c, -1), RVKAssertError);
    EXPECT_EQ((Row{gz.read(&c, 0), gz.read(buf, 0)}), (Row{0, -1}));
    EXPECT_EQ(up.counts.size(), 1u);
    EXPECT_EQ(drain(gz, 0, Form::Byte), "\xff\x00\xff\x7f\x80"s);
    EXPECT_EQ((std::vector<int>{gz_none.read(&c, 1), gz_none.read(&c, 1), gz_none.read(&c, 1), gz_none.read()}),
              (std::vector<int>{0, -1, -1, -1}));
}

// Behind the member, unWrap hands back the read-ahead starting with the next
// member's first byte; inside it, exactly the input inflate has not consumed.
// Before any read nothing goes back. Wrapped again, the stream starts a new
// member.
TEST(GZIPInputStream, UnwrapHandsBackUnconsumedInput)
{
    std::string const content = mixedData(30000, 9), first = zlibDeflate("first member"), second = zlibDeflate(content);
    ScriptedInputStream up({ScriptStep::data(first + second)}, true);
    ZUMGZIPInputStream gz(up);
    EXPECT_EQ(drain(gz), "first member");
    gz.unWrap();
    ASSERT_EQ(up.unreads.size(), 1u);
    EXPECT_EQ(up.unreads[0], second.substr(0, 16384 - first.size()));
    EXPECT_EQ(raised([&] { gz.read(); }), "RVKIllegalStateError() " + k_read);
    gz.wrap(up);
    EXPECT_EQ(gz.read(), static_cast<unsigned char>(content[0]));  // mid-member, then unwrapped
    gz.unWrap();
    std::string rest = drain(up);
    EXPECT_EQ(rest, second.substr(second.size() - rest.size()));
    EXPECT_FALSE(rest.empty());

    ScriptedInputStream fresh({ScriptStep::data(first)}, true);
    gz.wrap(fresh);
    gz.unWrap();
    EXPECT_TRUE(fresh.counts.empty() && fresh.unreads.empty());
    EXPECT_EQ(raised([&] { gz.unWrap(); }), "RVKIllegalStateError() @void ZUMGZIPInputStream::unWrap()");
}

// Every row of the failure table that the input can cause, met by readFully
// (which ends, also when the input ends inside the deflate data), and what
// the next read does: a new header is taken from the input that follows a
// header failure (the rest of the failed upstream read is dropped); a failed
// member raises again. The header is parsed whole before it is checked, the
// end of the input first (text whose fourth byte is 'l' has FEXTRA and FNAME).
TEST(GZIPInputStream, FailureTable)
{
    std::string const content = mixedData(20000, 5), member = zlibDeflate(content), ok = zlibDeflate("ok");
    std::size_t const trailer = member.size() - 8;
    std::string bad_crc = member, bad_length = member;
    bad_crc[trailer] ^= 1;
    bad_length[trailer + 4] ^= 1;
    std::string const not_gzip = failure(-3, "GZIP_NOT_GZIP"), unsupported = failure(-3, "GZIP_UNSUPPORTED");
    std::string const corrupt = failure(-3, "GZIP_CORRUPT"), truncated = failure(0, "GZIP_TRUNCATED");
    auto data = ScriptStep::data;
    struct Case { std::vector<ScriptStep> input; std::string first, then; };  // then "": a new member follows
    std::vector<Case> cases = {
        {{data(member.substr(0, 6)), ScriptStep::end()}, truncated, ""},
        {{data(member.substr(0, 6)), ScriptStep::zero()}, truncated, ""},
        {{data("Hello world, this text has no zero byte"), ScriptStep::end()}, truncated, ""},
        {{data("Hello worl\x02\0xyname\0more"s)}, not_gzip, ""},
        {{data("\x1f\x8c\x08\0\0\0\0\0\0\0junk"s)}, not_gzip, ""},
        {{data("\x1e\x8b\x08\0\0\0\0\0\0\0junk"s)}, not_gzip, ""},
        {{data("\x1f\x8b\x08\x20\0\0\0\0\0\0junk"s)}, unsupported, ""},
        {{data("\x1f\x8b\x08\x80\0\0\0\0\0\0junk"s)}, unsupported, ""},
        {{data("\x1f\x8b\x07\0\0\0\0\0\0\0junk"s)}, unsupported, ""},
        {{data(bad_crc)}, failure(-3, "GZIP_CRC_MISMATCH"), corrupt},
        {{data(bad_length)}, failure(-3, "GZIP_LENGTH_MISMATCH"), corrupt},
        {{data(member.substr(0, member.size() - 3))}, failure(1, "GZIP_TRUNCATED"), "none"},
        {{data(member.substr(0, trailer + 3)), ScriptStep::throwText("reset"), data(member.substr(trailer + 3))},
         "ZUMIOException(1,42) #TEXT_ERROR 'reset' " + k_read, "none"},  // ended, unverified
        {{data(member.substr(0, trailer + 6)), ScriptStep::throwIO(), data(member.substr(trailer + 6))},
         "ZUMIOException(1,5) @ScriptedInputStream::read", "none"},
        {{data(k_header + "\x07\0\0"s)}, corrupt, corrupt},  // a reserved block type
        // A text exception of the upstream becomes a ZUMIOException carrying
        // errno, the text message and the text; an I/O exception passes.
        {{ScriptStep::throwText("line broken")}, "ZUMIOException(1,42) #TEXT_ERROR 'line broken' " + k_read, ""},
        {{ScriptStep::throwIO()}, "ZUMIOException(1,5) @ScriptedInputStream::read", ""},
        {{data(ok.substr(0, 10)), ScriptStep::throwText("again"), data(ok.substr(10))},
         "ZUMIOException(1,42) #TEXT_ERROR 'again' " + k_read, ""},
    };
    for (std::size_t keep : {std::size_t(11), member.size() / 3, member.size() - 9}) {
        for (ScriptStep end : {ScriptStep::end(), ScriptStep::zero()}) {
            cases.push_back({ScriptedInputStream::pieces(member.substr(0, keep), {5000}), failure(-5, "GZIP_TRUNCATED"),
                             failure(-5, "GZIP_TRUNCATED")});
            cases.back().input.push_back(end);
        }
    }
    for (auto const& c : cases) {
        std::vector<ScriptStep> script = c.input;
        if (c.then.empty()) {
            script.push_back(data(ok));
        }
        ScriptedInputStream up(script);
        ZUMGZIPInputStream gz(up);
        std::string out(content.size() + 1, '\0');
        EXPECT_EQ(raised([&] { errno = 42, gz.readFully(&out[0], static_cast<int>(out.size())); }), c.first)
            << testing::PrintToString(c.input[0].bytes.substr(0, 12)) << " of " << c.input[0].bytes.size();
        EXPECT_EQ(c.then.empty() ? drain(gz) : raised([&] { gz.read(); }), c.then.empty() ? "ok" : c.then);
    }

    // The read that meets a bad trailer raises after writing the data into an
    // array; a byte buffer is left as it was, its terminating NUL included.
    ScriptedInputStream a({data(bad_crc)}), b({data(bad_crc)});
    ZUMGZIPInputStream into_array(a), into_buffer(b);
    std::string out(30000, '\0');
    RVKByteBuffer buf(0, 16);
    buf.appendChars("ab", 2);
    EXPECT_EQ(raised([&] { into_array.read(&out[0], 30000); }), failure(-3, "GZIP_CRC_MISMATCH"));
    EXPECT_EQ(raised([&] { into_buffer.read(buf, 30000); }), failure(-3, "GZIP_CRC_MISMATCH"));
    EXPECT_TRUE(out.substr(0, content.size()) == content);
    EXPECT_EQ(str(buf), "ab");
    EXPECT_STREQ(buf.str(), "ab");
}

// Members of every size decode with our reader.
// During write() the header goes down in one write, then only whole
// 16,384-byte blocks; at finish() the waiting bytes, the rest of the deflate
// data, the CRC-32 and the length in separate writes, then one flush. The
// deflate data is byte-identical to zlib's own raw deflate with the same
// parameters (in the fast deflate build, zlib inflates it to the content), and
// the trailer to zlib's, whether the content is written in one call or in
// pieces.
TEST(GZIPOutputStream, MembersMatchZlibGoDownInBlocksAndDecodeEverywhere)
{
    for (std::size_t size : {0u, 1u, 16383u, 16384u, 16385u, 40000u, 1u << 20}) {
        std::string content = mixedData(size, static_cast<unsigned>(size)), zlib = zlibDeflate(content);
        std::string reference = zlibDeflate(content, -15);
        for (std::size_t piece : {std::size_t(1u << 21), std::size_t(4999)}) {
            RecordingOutputStream down;
            ZUMGZIPOutputStream gz(down);
            writeInPieces(gz, content, {piece});
            std::vector<std::size_t> sizes = down.sizes(), blocks(sizes.size(), 16384);
            blocks[0] = 10;
            EXPECT_EQ(sizes, blocks) << size;
            gz.finish();
            std::string member = down.all();
            ASSERT_GE(down.writes.size(), sizes.size() + 3);
            EXPECT_EQ(member.substr(0, 10), k_header);
#if ZUM_FAST_DEFLATE
            // ISA-L's deflate data is not zlib's; zlib inflates it to the content.
            EXPECT_TRUE(zlibInflate(member.substr(10, member.size() - 18), -15) == content) << size << " in " << piece;
#else
            EXPECT_TRUE(member.substr(10, member.size() - 18) == reference) << size << " in " << piece;
#endif
            EXPECT_EQ(down.writes[down.writes.size() - 2], zlib.substr(zlib.size() - 8, 4));
            EXPECT_EQ(down.writes.back(), zlib.substr(zlib.size() - 4));
            EXPECT_EQ(down.flushes, 1);
            EXPECT_TRUE(decodeWithOurReader(member) == content) << size << " in " << piece;
        }
    }
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
    EXPECT_EQ(empty.sizes(), (std::vector<std::size_t>{10, 2, 4, 4}));
    EXPECT_EQ(empty.all(), k_header + "\x03\x00"s + std::string(8, '\0'));
    EXPECT_EQ(destroyed.all(), compress("abc"));
    EXPECT_EQ((Row{empty.flushes, destroyed.flushes, dropped.flushes}), (Row{1, 1, 0}));
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
    EXPECT_EQ((Row{first.flushes, second.flushes}), (Row{0, 2}));
    std::string all = first.all() + second.all();
    std::size_t next = all.size() - compress("next").size();
    EXPECT_TRUE(decodeWithOurReader(all.substr(0, next)) == content);
    EXPECT_EQ(decodeWithOurReader(all.substr(next)), "next");
}

// do_flush() with a sync flush in the middle of a member writes out, byte
// aligned, everything written so far, and the member goes on; a second one
// has nothing to add and is no error, and a block flush ends no member.
// Flush values that zlib's deflate does not know are refused with -2 and
// leave the member intact.
TEST(GZIPOutputStream, DoFlushSyncsTheMemberAndRefusesUnknownFlushValues)
{
    std::string content = mixedData(50000, 9);
    RecordingOutputStream down;
    ZUMGZIPOutputStream gz(down);
    gz.write(content.data(), 30000);
    EXPECT_EQ(gz.do_flush(Z_SYNC_FLUSH), 0);
    std::size_t const synced = down.all().size();
    EXPECT_EQ(gz.do_flush(Z_SYNC_FLUSH), 0);
    EXPECT_EQ(gz.do_flush(Z_BLOCK + 1), Z_STREAM_ERROR);
    EXPECT_EQ(gz.do_flush(-1), Z_STREAM_ERROR);
    gz.write(content.data() + 30000, 10000);
    EXPECT_EQ(gz.do_flush(Z_BLOCK), 0);  // a block flush, and the member goes on
    gz.write(content.data() + 40000, 10000);
    gz.finish();
    std::string const member = down.all();
    EXPECT_EQ(member.substr(synced - 4, 4), "\0\0\xFF\xFF"s);  // the empty stored block of the sync flush

    // Byte aligned after the flush: an empty last block completes the data so far.
    EXPECT_TRUE(zlibInflate(member.substr(10, synced - 10) + "\x03\x00"s, -15) == content.substr(0, 30000));
    EXPECT_TRUE(decodeWithOurReader(member) == content);
}

// A text exception of the downstream, wherever it is thrown, becomes a
// ZUMIOException with errno, the text message and the text, raised with the
// method text of the place. After a failed header write the next write starts
// the member again; a failure in the destructor is swallowed.
TEST(GZIPOutputStream, DownstreamFailuresAndMisuse)
{
    std::string content = testBytes(200000, 8);
    RecordingOutputStream dry;
    ZUMGZIPOutputStream counter(dry);
    counter.write(content.data(), 100000);
    counter.write(content.data() + 100000, 100000);
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
        EXPECT_EQ(raised([&] {
                      errno = 28, gz.write(content.data(), 100000);
                      gz.write(content.data() + 100000, 100000), gz.finish();
                  }),
                  "ZUMIOException(1,28) #TEXT_ERROR 'disk full' @" + c.method);
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

