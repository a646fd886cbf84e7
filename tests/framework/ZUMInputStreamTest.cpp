#include <gtest/gtest.h>

#include "TestStreams.h"

namespace {

// A stream that provides only the byte-buffer read and the single-byte read,
// so every other operation is the base class's default.
class DefaultsStream : public ZUMInputStream {
public:
    explicit DefaultsStream(std::vector<ScriptStep> script) : inner(std::move(script)) {}
    using ZUMInputStream::read;
    int read(RVKByteBuffer& buffer, int count) override { return inner.read(buffer, count); }
    int read() override { return inner.read(); }
    ScriptedInputStream inner;
};

// A stream whose reads deliver nothing; it ends only after a million calls.
class ZeroStream : public ZUMInputStream {
public:
    int read(RVKByteBuffer&, int) override { return ++calls < 1000000 ? 0 : -1; }
    int read(char*, int) override { return ++calls < 1000000 ? 0 : -1; }
    int read() override { return -1; }
    int calls = 0;
};

}  // namespace

TEST(ZUMInputStreamDefaults, ArrayReadAndReadFullyGoThroughTheByteBufferRead)
{
    DefaultsStream s({ScriptStep::data("abcdef"), ScriptStep::zero(), ScriptStep::throwIO(), ScriptStep::data("0123"),
                      ScriptStep::zero(), ScriptStep::data("456789")});
    char buf[11];
    std::memset(buf, '#', sizeof buf);
    EXPECT_EQ(s.read(nullptr, 10) + s.read(buf, 0) + s.read(buf, -3), 0);
    EXPECT_TRUE(s.inner.counts.empty());
    EXPECT_EQ(s.read(buf, 4), 4);
    EXPECT_EQ(s.read(buf + 4, 8), 2);
    EXPECT_EQ(s.read(buf, 8), 0);
    EXPECT_EQ(std::string(buf, 8), "abcdef##");
    EXPECT_THROW(s.read(buf, 8), ZUMIOException);
    EXPECT_EQ(s.readFully(buf, 10), 10);
    EXPECT_EQ(std::string(buf, 11), "0123456789#");
    EXPECT_EQ(s.inner.counts, (std::vector<int>{4, 8, 8, 8, 10, 6, 6}));
    EXPECT_EQ(s.read(buf, 8), -1);
}

TEST(ZUMInputStreamDefaults, ReadFullyLoopsOverShortReadsUntilCountOrEnd)
{
    ScriptedInputStream s({ScriptStep::data("abcd"), ScriptStep::zero(), ScriptStep::data("efghijXY")});
    RVKByteBuffer buffer;
    buffer.appendChars("pre:", 4);
    EXPECT_EQ(s.readFully(buffer, 0), 0);
    EXPECT_TRUE(s.counts.empty());
    EXPECT_EQ(s.readFully(buffer, 10), 10);
    EXPECT_EQ(str(buffer), "pre:abcdefghij");
    EXPECT_EQ(s.counts, (std::vector<int>{10, 6, 6}));
    char buf[8];
    ScriptedInputStream a(ScriptedInputStream::pieces("12345", 2, true));
    EXPECT_EQ(a.readFully(buf, 8), -1);  // the bytes read stay in the destination
    EXPECT_EQ(std::string(buf, 5), "12345");
    ZeroStream zeros;  // a source that delivers nothing forever is not read forever
    EXPECT_EQ(zeros.readFully(buffer, 1) + zeros.readFully(buf, 1), -2);
    EXPECT_LT(zeros.calls, 1000000);
    EXPECT_THROW(a.readFully(buffer, -1), RVKIllegalArgumentError);
    EXPECT_THROW(a.readFully(static_cast<char*>(nullptr), 2), RVKIllegalArgumentError);
    EXPECT_THROW(a.readFully(buf, -2), RVKIllegalArgumentError);
}

TEST(ZUMInputStreamDefaults, RefusesPushBackTimeoutsAndCancellation)
{
    DefaultsStream s({ScriptStep::data("abc")});
    ZUMInputStream& in = s;
    EXPECT_EQ(in.canUnread() + in.canTimeout() + in.getTimeout() + in.canCancel() + in.getCancel(), 0);
    EXPECT_EQ(raised([&] { in.setTimeout(30); }),
              "RVKUnsupportedOperationError() @RVK_bool ZUMInputStream::setTimeout( int time_limit_sec )");
    EXPECT_EQ(raised([&] { in.setCancel(1); }), "RVKUnsupportedOperationError() @ZUMInputStream::setCancel");
    EXPECT_EQ(raised([&] { in.cancel(); }), "RVKUnsupportedOperationError() @ZUMInputStream::cancel");
    EXPECT_EQ(raised([&] { in.unread("x", 1); }), "text: not implemented");
    in.close();
    EXPECT_EQ(in.read(), 'a');
}
