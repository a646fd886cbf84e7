#include <gtest/gtest.h>

#include <cstring>
#include <functional>
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

void expectUnsupported(std::function<void()> const& call, char const* method)
{
    try {
        call();
        ADD_FAILURE() << "no raise for " << method;
    } catch (RVKUnsupportedOperationError const& e) {
        EXPECT_EQ(e.getCode(), 0);
        EXPECT_EQ(e.getText(), nullptr);
        ASSERT_EQ(e.getBackTraceSize(), 1u);
        EXPECT_STREQ(e.getBackTraceEntry(0).method, method);
        EXPECT_STREQ(e.getBackTraceEntry(0).macro, "RVK_THROW");
        EXPECT_NE(std::strstr(e.getBackTraceEntry(0).location.file, "ZUMInputStream"), nullptr);
    }
}

}  // namespace

TEST(ZUMInputStreamDefaults, ArrayReadRefusesNullAndCountsBelowOneWithoutReading)
{
    DefaultsStream s({ScriptStep::data("abc")});
    char buf[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(s.read(nullptr, 10), 0);
    EXPECT_EQ(s.read(buf, 0), 0);
    EXPECT_EQ(s.read(buf, -3), 0);
    EXPECT_EQ(s.buffer_reads, 0);
    EXPECT_EQ(buf[0], '#');
}

TEST(ZUMInputStreamDefaults, ArrayReadGoesThroughTheByteBufferRead)
{
    DefaultsStream s({ScriptStep::data("abcdef"), ScriptStep::zero(), ScriptStep::throwIO(),
                      ScriptStep::end()});
    char buf[8];
    std::memset(buf, '#', sizeof buf);
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

TEST(ZUMInputStreamDefaults, ReadFullyIntoByteBufferLoopsOverShortReads)
{
    ScriptedInputStream s({ScriptStep::data("abcd"), ScriptStep::zero(), ScriptStep::data("efghijXY")});
    RVKByteBuffer buffer;
    buffer.appendChars("pre:", 4);
    EXPECT_EQ(s.readFully(buffer, 0), 0);
    EXPECT_TRUE(s.counts.empty());
    EXPECT_EQ(s.readFully(buffer, 10), 10);
    EXPECT_EQ(std::string(buffer.str(), static_cast<std::size_t>(buffer.pcount())), "pre:abcdefghij");
    EXPECT_EQ(s.counts, (std::vector<int>{10, 6, 6}));
}

TEST(ZUMInputStreamDefaults, ReadFullyIntoArrayFillsInStreamOrder)
{
    ScriptedInputStream s({ScriptStep::data("0123"), ScriptStep::data("456789")});
    char buf[11];
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(s.readFully(buf, 10), 10);
    EXPECT_EQ(std::string(buf, 11), "0123456789#");
    EXPECT_EQ(s.array_reads, 2);

    DefaultsStream d({ScriptStep::data("ab"), ScriptStep::zero(), ScriptStep::data("cd")});
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(d.readFully(buf, 4), 4);
    EXPECT_EQ(std::string(buf, 5), "abcd#");
}

TEST(ZUMInputStreamDefaults, ReadFullyReturnsMinusOneAtEndKeepingTheBytes)
{
    ScriptedInputStream a(ScriptedInputStream::pieces("12345", 2));
    RVKByteBuffer buffer;
    EXPECT_EQ(a.readFully(buffer, 8), -1);
    EXPECT_EQ(std::string(buffer.str(), static_cast<std::size_t>(buffer.pcount())), "12345");

    ScriptedInputStream b(ScriptedInputStream::pieces("12345", 2, true));
    char buf[8];
    EXPECT_EQ(b.readFully(buf, 8), -1);
    EXPECT_EQ(std::string(buf, 5), "12345");

    // A source that delivers nothing forever is not read forever.
    std::vector<ScriptStep> zeros(5000, ScriptStep::zero());
    ScriptedInputStream c(zeros);
    EXPECT_EQ(c.readFully(buffer, 1), -1);
    ScriptedInputStream d(zeros);
    EXPECT_EQ(d.readFully(buf, 1), -1);
}

TEST(ZUMInputStreamDefaults, ReadFullyRejectsNegativeCountAndNullDestination)
{
    ScriptedInputStream s({ScriptStep::data("abc")});
    RVKByteBuffer buffer;
    EXPECT_THROW(s.readFully(buffer, -1), RVKIllegalArgumentError);
    EXPECT_THROW(s.readFully(static_cast<char*>(nullptr), 2), RVKIllegalArgumentError);
    EXPECT_THROW(s.readFully(buffer.str(), -2), RVKIllegalArgumentError);
    EXPECT_TRUE(s.counts.empty());
}

TEST(ZUMInputStreamDefaults, RefusesPushBackTimeoutsAndCancellation)
{
    DefaultsStream s({ScriptStep::data("abc")});
    ZUMInputStream& in = s;
    EXPECT_EQ(in.canUnread(), 0);
    EXPECT_EQ(in.canTimeout(), 0);
    EXPECT_EQ(in.getTimeout(), 0);
    EXPECT_EQ(in.canCancel(), 0);
    EXPECT_EQ(in.getCancel(), 0);
    expectUnsupported([&] { in.setTimeout(30); }, "RVK_bool ZUMInputStream::setTimeout( int time_limit_sec )");
    expectUnsupported([&] { in.setCancel(1); }, "ZUMInputStream::setCancel");
    expectUnsupported([&] { in.cancel(); }, "ZUMInputStream::cancel");
    try {
        in.unread("x", 1);
        ADD_FAILURE() << "unread did not throw";
    } catch (char const* text) {
        EXPECT_STREQ(text, "not implemented");
    }
    in.close();
    EXPECT_EQ(in.read(), 'a');
}
