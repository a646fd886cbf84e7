#include <gtest/gtest.h>

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

std::string const k_not_wrapped = "RVKIllegalStateError() @ZUMFilterInputStream::unWrap - stream not wrapped";

}  // namespace

TEST(ZUMFilterInputStream, WrapAndUnWrapCheckTheirState)
{
    PassFilter f;  // unwrapped: answers false or 0 and raises nothing
    EXPECT_EQ(f.canTimeout() + f.setTimeout(5) + f.getTimeout() + f.canCancel() + f.setCancel(1) + f.getCancel(), 0);
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
