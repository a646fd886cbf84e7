#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "TestStreams.h"

namespace {

// A stream that provides only the byte-buffer read and the single-byte read,
// so every other operation is the base class's default.
class DefaultsStream : public ZUMInputStream {
public:
    explicit DefaultsStream(std::vector<ScriptStep> script) : m_inner(std::move(script)) {}
    using ZUMInputStream::read;
    int read(RVKByteBuffer& buffer, int count) override
    {
        ++buffer_reads;
        return m_inner.read(buffer, count);
    }
    int read() override { return m_inner.read(); }
    int buffer_reads = 0;

private:
    ScriptedInputStream m_inner;
};

// A stream whose reads deliver nothing; it ends only after a million calls.
class ZeroStream : public ZUMInputStream {
public:
    int read(RVKByteBuffer&, int) override { return ++calls < 1000000 ? 0 : -1; }
    int read(char*, int) override { return ++calls < 1000000 ? 0 : -1; }
    int read() override { return -1; }
    int calls = 0;
};

std::string content(RVKByteBuffer const& b)
{
    return std::string(b.str(), static_cast<std::size_t>(b.pcount()));
}

}  // namespace

TEST(ZUMInputStreamDefaults, ArrayReadGoesThroughTheByteBufferRead)
{
    DefaultsStream s({ScriptStep::data("abcdef"), ScriptStep::zero(), ScriptStep::throwIO(),
                      ScriptStep::end()});
    char buf[8];
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(s.read(nullptr, 10) + s.read(buf, 0) + s.read(buf, -3), 0);
    EXPECT_EQ(s.buffer_reads, 0);
    EXPECT_EQ(s.read(buf, 4), 4);
    EXPECT_EQ(std::string(buf, 5), "abcd#");
    EXPECT_EQ(s.read(buf, 8), 2);
    EXPECT_EQ(std::string(buf, 3), "efc");
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(s.read(buf, 8), 0);
    EXPECT_THROW(s.read(buf, 8), ZUMIOException);
    EXPECT_EQ(s.read(buf, 8), -1);
    EXPECT_EQ(std::string(buf, 8), "########");
    EXPECT_EQ(s.buffer_reads, 5);
}

TEST(ZUMInputStreamDefaults, ReadFullyLoopsOverShortReads)
{
    ScriptedInputStream s({ScriptStep::data("abcd"), ScriptStep::zero(), ScriptStep::data("efghijXY")});
    RVKByteBuffer buffer;
    buffer.appendChars("pre:", 4);
    EXPECT_EQ(s.readFully(buffer, 0), 0);
    EXPECT_TRUE(s.counts.empty());
    EXPECT_EQ(s.readFully(buffer, 10), 10);
    EXPECT_EQ(content(buffer), "pre:abcdefghij");
    EXPECT_EQ(s.counts, (std::vector<int>{10, 6, 6}));

    ScriptedInputStream a({ScriptStep::data("0123"), ScriptStep::data("456789")});
    char buf[11];
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(a.readFully(buf, 10), 10);
    EXPECT_EQ(std::string(buf, 11), "0123456789#");
    EXPECT_EQ(a.array_reads, 2);

    DefaultsStream d({ScriptStep::data("ab"), ScriptStep::zero(), ScriptStep::data("cd")});
    EXPECT_EQ(d.readFully(buf, 4), 4);
    EXPECT_EQ(std::string(buf, 4), "abcd");
}

TEST(ZUMInputStreamDefaults, ReadFullyEndsWithMinusOneKeepingTheBytes)
{
    ScriptedInputStream a(ScriptedInputStream::pieces("12345", 2));
    RVKByteBuffer buffer;
    EXPECT_EQ(a.readFully(buffer, 8), -1);
    EXPECT_EQ(content(buffer), "12345");
    ScriptedInputStream b(ScriptedInputStream::pieces("12345", 2, true));
    char buf[8];
    EXPECT_EQ(b.readFully(buf, 8), -1);
    EXPECT_EQ(std::string(buf, 5), "12345");

    // A source that delivers nothing forever is not read forever.
    ZeroStream zeros;
    EXPECT_EQ(zeros.readFully(buffer, 1), -1);
    EXPECT_EQ(zeros.readFully(buf, 1), -1);
    EXPECT_LT(zeros.calls, 1000000);

    // Arguments that could never be satisfied are refused.
    EXPECT_THROW(a.readFully(buffer, -1), RVKIllegalArgumentError);
    EXPECT_THROW(a.readFully(static_cast<char*>(nullptr), 2), RVKIllegalArgumentError);
    EXPECT_THROW(a.readFully(buf, -2), RVKIllegalArgumentError);
}

TEST(ZUMInputStreamDefaults, RefusesPushBackTimeoutsAndCancellation)
{
    DefaultsStream s({ScriptStep::data("abc")});
    ZUMInputStream& in = s;
    EXPECT_EQ(in.canUnread() + in.canTimeout() + in.getTimeout() + in.canCancel() + in.getCancel(), 0);
    EXPECT_EQ(raisedMethod<RVKUnsupportedOperationError>([&] { in.setTimeout(30); }),
              "RVK_bool ZUMInputStream::setTimeout( int time_limit_sec )");
    EXPECT_EQ(raisedMethod<RVKUnsupportedOperationError>([&] { in.setCancel(1); }),
              "ZUMInputStream::setCancel");
    EXPECT_EQ(raisedMethod<RVKUnsupportedOperationError>([&] { in.cancel(); }), "ZUMInputStream::cancel");
    EXPECT_EQ(raisedText<RVKUnsupportedOperationError>([&] { in.cancel(); }), "<null>");
    try {
        in.unread("x", 1);
        ADD_FAILURE() << "unread did not throw";
    } catch (char const* text) {
        EXPECT_STREQ(text, "not implemented");
    }
    in.close();
    EXPECT_EQ(in.read(), 'a');
}
