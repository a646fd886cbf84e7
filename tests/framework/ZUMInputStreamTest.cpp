// The defaults of the input stream base class and the wrapping rules of the
// input filter base class.
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

// An input filter that passes every read through unchanged.
class PassFilter : public ZUMFilterInputStream {
public:
    PassFilter() = default;
    explicit PassFilter(ZUMInputStream* upstream) { wrap(*upstream); }
    int read(RVKByteBuffer& buffer, int count) override { return p_upstream->read(buffer, count); }
    int read(char* buf, int count) override { return p_upstream->read(buf, count); }
    int read() override { return p_upstream->read(); }
};

std::string const k_not_wrapped = "RVKIllegalStateError() @ZUMFilterInputStream::unWrap - stream not wrapped";

}  // namespace

// The array read goes through the byte-buffer read; readFully loops over
// short reads until the count (returning it) or the end (returning -1, the
// bytes read kept), and not forever over a source that delivers nothing.
TEST(ZUMInputStreamDefaults, ArrayReadAndReadFully)
{
    DefaultsStream s({ScriptStep::data("abcdef"), ScriptStep::zero(), ScriptStep::throwIO(), ScriptStep::data("0123"),
                      ScriptStep::zero(), ScriptStep::data("456789XY"), ScriptStep::data("12345")});
    char buf[11] = "##########";
    EXPECT_EQ((Row{s.read(nullptr, 10), s.read(buf, 0), s.read(buf, -3), s.readFully(buf, 0)}), (Row{0, 0, 0, 0}));
    EXPECT_EQ((Row{s.read(buf, 4), s.read(buf + 4, 8), s.read(buf, 8)}), (Row{4, 2, 0}));
    EXPECT_EQ(std::string(buf, 8), "abcdef##");
    EXPECT_THROW(s.read(buf, 8), ZUMIOException);
    EXPECT_EQ(s.readFully(buf, 10), 10);
    EXPECT_EQ(std::string(buf, 11), std::string("0123456789\0", 11));
    RVKByteBuffer buffer;
    buffer.appendChars("pre:", 4);
    EXPECT_EQ(s.readFully(buffer, 10), -1);
    EXPECT_EQ(str(buffer), "pre:XY12345");
    EXPECT_EQ(s.inner.counts, (std::vector<int>{4, 8, 8, 8, 10, 6, 6, 10, 8, 3}));
    ScriptedInputStream zeros(std::vector<ScriptStep>(100000, ScriptStep::zero()));
    EXPECT_EQ((Row{zeros.readFully(buffer, 1), zeros.readFully(buf, 1)}), (Row{-1, -1}));
    EXPECT_LT(zeros.counts.size(), 100000u);
    EXPECT_THROW(s.readFully(buffer, -1), RVKIllegalArgumentError);
    EXPECT_THROW(s.readFully(static_cast<char*>(nullptr), 2), RVKIllegalArgumentError);
    EXPECT_THROW(s.readFully(buf, -2), RVKIllegalArgumentError);
}

TEST(ZUMInputStreamDefaults, RefusesPushBackTimeoutsAndCancellation)
{
    ZUMMemoryInputStream memory("abc", 3);
    ZUMInputStream& in = memory;
    EXPECT_EQ((Row{in.canUnread(), in.canTimeout(), in.getTimeout(), in.canCancel(), in.getCancel()}), (Row{0, 0, 0, 0, 0}));
    EXPECT_EQ(raised([&] { in.setTimeout(30); }),
              "RVKUnsupportedOperationError() " + k_set_timeout);
    EXPECT_EQ(raised([&] { in.setCancel(1); }), "RVKUnsupportedOperationError() @ZUMInputStream::setCancel");
    EXPECT_EQ(raised([&] { in.cancel(); }), "RVKUnsupportedOperationError() @ZUMInputStream::cancel");
    EXPECT_EQ(raised([&] { in.unread("x", 1); }), "text: not implemented");
    EXPECT_EQ(in.read(), 'a');
}

TEST(ZUMFilterInputStream, WrapAndUnWrapCheckTheirState)
{
    PassFilter f;  // unwrapped: answers false or 0 and raises nothing
    EXPECT_EQ((Row{f.canTimeout(), f.setTimeout(5), f.getTimeout(), f.canCancel(), f.setCancel(1), f.getCancel()}),
              (Row{0, 0, 0, 0, 0, 0}));
    EXPECT_NO_THROW(f.cancel());
    EXPECT_NO_THROW(f.close());
    EXPECT_EQ(raised([&] { f.unWrap(); }), k_not_wrapped);
    ZUMMemoryInputStream memory("ab", 2), other("xy", 2);
    f.wrap(memory);
    EXPECT_EQ(raised([&] { f.wrap(other); }),
              "RVKIllegalStateError() @ZUMFilterInputStream::wrap - stream is already wrapped");
    EXPECT_EQ(raised([&] { f.unWrap(); }), "RVKAssertError() @ZUMFilterInputStream::unWrap - upstream can't unread");
    EXPECT_EQ(f.read(), 'a');

    ScriptedInputStream pushable({ScriptStep::data("pq")}, true);
    PassFilter g(&pushable);
    g.close();  // closing keeps the filter wrapped
    g.unWrap();
    EXPECT_EQ(raised([&] { g.unWrap(); }), k_not_wrapped);
    g.wrap(memory);
    EXPECT_EQ(g.read(), 'b');
}
