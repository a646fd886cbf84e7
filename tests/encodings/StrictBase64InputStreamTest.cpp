// fuzz/base64_strict.cpp checks bytes, faults and offsets against a reference
// over random texts, read and piece sizes, empty and failing source reads.
#include <gtest/gtest.h>

#include "TestFiles.h"
#include "TestStreams.h"

namespace {

// What a strict stream makes of `text` (in pieces of `piece` bytes, 0: at
// once, 1: with an empty read after each), read `count` bytes at a time: the
// bytes, then "|" and what the last read raised ("end" for -1).
std::string decode(std::string const& text, int flag, int count = 16384, std::size_t piece = 0)
{
    ScriptedInputStream source(ScriptedInputStream::pieces(text, {piece}, piece == 1));
    ZUMStrictBase64InputStream b64(source, flag);
    std::string got, stop = "none";
    std::vector<char> buf(static_cast<std::size_t>(count));
    for (int n = 0, empty = 0; stop == "none" && n >= 0 && empty < 100; empty = n == 0 ? empty + 1 : 0) {
        stop = raised([&] { n = b64.read(buf.data(), count); });
        got.append(buf.data(), stop == "none" && n > 0 ? static_cast<std::size_t>(n) : 0u);
    }
    return got + "|" + (stop == "none" ? "end" : stop);
}

}  // namespace

// The bytes of every group before the first fault, then the fault with its
// offset (blanks skipped by the flag counted); the same read a byte at a time
// and from a source of one-byte pieces with empty reads between.
TEST(StrictBase64InputStream, DeliversTheGroupsBeforeTheFirstFault)
{
    for (auto const& row : dataTable("base64/strict.tsv")) {
        std::string const expected = row[2] + "|" + (row.size() < 4 ? "end" : "ZUMIOException(1,0) #BASE64_" + row[3] +
                                                       " '" + row[4] + "' @ZUMStrictBase64InputStream::read");
        EXPECT_EQ(decode(row[0], std::stoi(row[1]), 1), expected) << row[0].substr(0, 20) << " read by 1";
        EXPECT_EQ(decode(row[0], std::stoi(row[1]), 16384, 1), expected) << row[0].substr(0, 20) << " in pieces";
    }
}

// Where coreutils' base64 -d (-di with the flag) accepts a text the stream
// gives the same bytes, where it rejects one the stream raises. The stream
// also raises for what base64 skips beyond the flag: LF without it, any byte
// but CR, LF, tab and space with it.
TEST(StrictBase64InputStream, AgreesWithCoreutilsBase64)
{
    if (!haveProgram("base64")) {
        GTEST_SKIP() << "no base64 program";
    }
    TempDir dir;
    std::string const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
    for (auto const& row : dataTable("base64/strict.tsv")) {
        std::string const in = dir.write("in", row[0]);
        for (int flag : {0, 1}) {
            bool const accepted = runCommand(std::string("base64 -d") + (flag ? "i" : "") + " < " + shellQuoted(in) +
                                             " > " + shellQuoted(dir.file("out")) + " 2>/dev/null");
            // Bytes base64 skips and the stream does not.
            bool const skipsMore = row[0].find_first_not_of(alphabet + (flag ? "\r\n\t " : "")) != std::string::npos;
            std::string const ours = decode(row[0], flag);
            if (accepted && !skipsMore) {
                EXPECT_EQ(ours, readFile(dir.file("out")) + "|end") << row[0] << " flag " << flag;
            } else {
                EXPECT_NE(ours.substr(ours.find('|') + 1), "end") << row[0] << " flag " << flag;
            }
        }
    }
}

TEST(StrictBase64InputStream, ReadFormsUnwrapAndMisuse)
{
    ZUMStrictBase64InputStream b64;
    RVKByteBuffer got(0, 16);
    EXPECT_EQ(raised([&] { b64.read(got, 4); }), "RVKIllegalStateError() @ZUMStrictBase64InputStream::read");
    EXPECT_EQ(raised([&] { b64.unWrap(); }), "RVKIllegalStateError() @ZUMStrictBase64InputStream::unWrap");
    EXPECT_EQ(b64.canUnread(), 0);

    // unWrap hands the text read ahead back to a stream that can unread; over
    // one that cannot it is dropped. Either way the stream starts afresh.
    ZUMMemoryInputStream raw("YWJjZGVm!", 9);
    ZUMBufferedInputStream bis(raw, 64);
    b64.wrap(bis);
    got << ">";
    EXPECT_EQ(b64.read(got, 0), 0);
    EXPECT_EQ(b64.read(got, 3), 3);
    EXPECT_EQ(str(got), ">abc");
    EXPECT_EQ(raised([&] { b64.read(nullptr, 1); }), "RVKAssertError(RVK_ASSERT(buf);) @-");
    b64.unWrap();
    EXPECT_EQ(drain(bis), "ZGVm!");
    ZUMMemoryInputStream bad("Z!", 2);
    b64.wrap(bad);
    EXPECT_NE(raised([&] { b64.read(); }).find("'invalid character '!' at byte 1'"), std::string::npos);
    b64.unWrap();

    // read() gives up after 1000 reads of nothing and reads on after; the
    // source is not read again after its end.
    std::vector<ScriptStep> steps(1000, ScriptStep::zero());
    steps.insert(steps.end(), {ScriptStep::data("Zg=="), ScriptStep::end(), ScriptStep::data("Zg==")});
    ScriptedInputStream slow(steps);
    b64.wrap(slow);
    EXPECT_EQ(b64.read(), -1);
    EXPECT_EQ(b64.read(), 'f');
    EXPECT_EQ(b64.read(got, 5), -1);
    EXPECT_EQ(b64.read(got, 5), -1);
    EXPECT_EQ(slow.counts.size(), 1002u);
}
