#include <gtest/gtest.h>

#include <string>

#include "TestStreams.h"

namespace {

// An input filter that passes every read through unchanged.
class PassFilter : public ZUMFilterInputStream {
public:
    PassFilter() = default;
    explicit PassFilter(ZUMInputStream* upstream) { wrap(*upstream); }
    int read(RVKByteBuffer& buffer, int count) override { return p_upstream->read(buffer, count); }
    int read(char* buf, int count) override { return p_upstream->read(buf, count); }
    int read() override { return p_upstream->read(); }
};

// An output filter that counts its flushes (which can be told to fail) and
// otherwise keeps the base's flush and close.
class CountingFilter : public ZUMFilterOutputStream {
public:
    explicit CountingFilter(ZUMOutputStream& downstream) : ZUMFilterOutputStream(downstream) {}
    void write(char const* bytes, int count) override { p_downstream->write(bytes, count); }
    void flush() override
    {
        ++flushes;
        wrapped_at_flush = p_downstream != nullptr;
        if (fail_flush) {
            RVK_THROW(RVKIllegalStateError(0, nullptr), "CountingFilter::flush");
        }
        ZUMFilterOutputStream::flush();
    }
    int flushes = 0;
    bool wrapped_at_flush = false;
    bool fail_flush = false;
};

// An endpoint that implements the timeout and cancel operations.
class TimedEndpoint : public ScriptedInputStream {
public:
    TimedEndpoint() : ScriptedInputStream({}, true) {}
    RVK_bool canTimeout() const override { return 1; }
    RVK_bool setTimeout(int s) override { timeout = s; return s > 0; }
    RVK_bool canCancel() const override { return 1; }
    RVK_bool setCancel(int setting) override { cancel_setting = setting; return 1; }
    int getCancel() const override { return cancel_setting + 100; }
    void cancel() override
    {
        RVK_THROW(ZUMIOCancelException(static_cast<RVKSeverity>(1), 4L), "TimedEndpoint::cancel");
    }
    int cancel_setting = 0;
};

char const k_already_wrapped[] = "ZUMFilterInputStream::wrap - stream is already wrapped";
char const k_not_wrapped[] = "ZUMFilterInputStream::unWrap - stream not wrapped";
char const k_cannot_unread[] = "ZUMFilterInputStream::unWrap - upstream can't unread";

}  // namespace

TEST(ZUMFilterInputStream, WrapTwiceRaisesAndKeepsTheFirstUpstream)
{
    ZUMMemoryInputStream first("ab", 2);
    ZUMMemoryInputStream second("xy", 2);
    PassFilter f(&first);
    EXPECT_EQ(raisedMethod<RVKIllegalStateError>([&] { f.wrap(second); }), k_already_wrapped);
    EXPECT_EQ(f.read(), 'a');
    EXPECT_EQ(second.read(), 'x');
}

TEST(ZUMFilterInputStream, UnWrapNeedsAnUpstreamThatCanUnread)
{
    PassFilter f;  // unwrapped: answers false or 0 and raises nothing
    EXPECT_EQ(f.canTimeout() + f.setTimeout(5) + f.getTimeout(), 0);
    EXPECT_EQ(f.canCancel() + f.setCancel(1) + f.getCancel(), 0);
    EXPECT_NO_THROW(f.cancel());
    EXPECT_NO_THROW(f.close());
    EXPECT_EQ(raisedMethod<RVKIllegalStateError>([&] { f.unWrap(); }), k_not_wrapped);
    ZUMMemoryInputStream memory("ab", 2);
    f.wrap(memory);
    EXPECT_EQ(raisedMethod<RVKAssertError>([&] { f.unWrap(); }), k_cannot_unread);
    EXPECT_EQ(f.getUpstream(), &memory);
    EXPECT_EQ(f.read(), 'a');

    ScriptedInputStream pushable({ScriptStep::data("pq")}, true);
    PassFilter g(&pushable);
    g.close();  // closing keeps the filter wrapped
    EXPECT_EQ(g.getUpstream(), &pushable);
    g.unWrap();
    EXPECT_EQ(g.getUpstream(), nullptr);
    EXPECT_EQ(raisedMethod<RVKIllegalStateError>([&] { g.unWrap(); }), k_not_wrapped);
    g.wrap(memory);
    EXPECT_EQ(g.read(), 'b');
}

TEST(ZUMFilterInputStream, PassesCloseTimeoutAndCancelThroughAStack)
{
    TimedEndpoint endpoint;
    endpoint.timeout = 30;
    PassFilter bottom(&endpoint), middle(&bottom), top(&middle);
    EXPECT_EQ(top.getTimeout(), 30);
    EXPECT_EQ(top.canTimeout() + top.canCancel(), 2);
    EXPECT_EQ(top.setTimeout(12), 1);
    EXPECT_EQ(top.setTimeout(-1), 0);
    EXPECT_EQ(endpoint.timeout, -1);
    EXPECT_EQ(top.setCancel(3), 1);
    EXPECT_EQ(top.getCancel(), 103);
    EXPECT_EQ(raisedMethod<ZUMIOCancelException>([&] { top.cancel(); }), "TimedEndpoint::cancel");
    top.close();
    EXPECT_EQ(endpoint.closes, 1);
    EXPECT_EQ(top.getUpstream(), &middle);

    // An endpoint that keeps the defaults answers with its own refusals.
    ZUMMemoryInputStream memory("ab", 2);
    PassFilter over(&memory), overOver(&over);
    EXPECT_EQ(raisedMethod<RVKUnsupportedOperationError>([&] { overOver.setTimeout(5); }),
              "RVK_bool ZUMInputStream::setTimeout( int time_limit_sec )");
    EXPECT_EQ(raisedMethod<RVKUnsupportedOperationError>([&] { overOver.cancel(); }),
              "ZUMInputStream::cancel");
    overOver.close();
    EXPECT_FALSE(memory.isOpen());
}

TEST(ZUMFilterStreams, DestroyingAWrappedFilterLeavesTheStreamBeneathUsable)
{
    ZUMMemoryInputStream memory("abc", 3);
    RecordingOutputStream recorder;
    {
        PassFilter in(&memory);
        EXPECT_EQ(in.read(), 'a');
        CountingFilter out(recorder);
        out.write("w", 1);
        out.close();  // the base's flush and close pass nothing down
        out.flush();
    }
    EXPECT_EQ(memory.read(), 'b');
    EXPECT_EQ(recorder.flushes + recorder.closes, 0);
    recorder.write("z", 1);
    EXPECT_EQ(recorder.writes, (std::vector<std::string>{"w", "z"}));
}

TEST(ZUMFilterOutputStream, WrapAndUnWrapAssertTheirStateAndUnWrapFlushesOnce)
{
    RecordingOutputStream a, b;
    CountingFilter f(a);
    EXPECT_EQ(raisedText<RVKAssertError>([&] { f.wrap(b); }), "RVK_ASSERT(!p_downstream);");
    f.write("1", 1);
    EXPECT_EQ(a.all(), "1");
    f.unWrap();
    EXPECT_EQ(f.flushes, 1);
    EXPECT_TRUE(f.wrapped_at_flush);
    EXPECT_EQ(f.getDownstream(), nullptr);
    EXPECT_EQ(raisedText<RVKAssertError>([&] { f.unWrap(); }), "RVK_ASSERT(p_downstream);");
    EXPECT_EQ(f.flushes, 1);
    f.wrap(b);
    f.write("2", 1);
    EXPECT_EQ(b.all(), "2");

    CountingFilter failing(a);
    failing.fail_flush = true;
    EXPECT_THROW(failing.unWrap(), RVKIllegalStateError);
    EXPECT_EQ(failing.getDownstream(), &a);
}
