#include "ZUMInputStream.h"

#include <cstring>

#include "RVKIllegalArgumentError.h"
#include "RVKIllegalStateError.h"
#include "RVKMacros.h"
#include "RVKUnsupportedOperationError.h"
#include "ZUMFilterInputStream.h"
#include "ZUMReadSupport.h"

namespace {

// Repeats `readSome(done)`, a read of what is still missing after `done`
// bytes, until `count` bytes have come. Returns count, or -1 at the end of the
// stream or after k_max_empty_reads reads in a row that deliver nothing.
template <class ReadSome>
int readAll(int count, ReadSome readSome)
{
    int done = 0;
    for (int empty = 0; done != count;) {
        int n = readSome(done);
        if (n < 0) {
            return -1;
        }
        empty = n == 0 ? empty + 1 : 0;
        if (empty == zum_detail::k_max_empty_reads) {
            return -1;
        }
        done += n;
    }
    return count;
}

}  // namespace

// ---- ZUMInputStream ---------------------------------------------------------

ZUMInputStream::~ZUMInputStream() = default;

int ZUMInputStream::read(char* buf, int count)
{
    if (!buf || count < 1) {
        return 0;
    }
    RVKByteBuffer local(static_cast<unsigned>(count), 256);
    int n = read(local, count);
    if (n > 0) {
        std::memcpy(buf, local.str(), static_cast<std::size_t>(n));
    }
    return n;
}

int ZUMInputStream::readFully(RVKByteBuffer& buffer, int count)
{
    if (count == 0) {
        return 0;
    }
    if (count < 0) {
        RVK_THROW(RVKIllegalArgumentError(0, nullptr), "ZUMInputStream::readFully - negative count");
    }
    return readAll(count, [&](int done) { return read(buffer, count - done); });
}

int ZUMInputStream::readFully(char* buf, int count)
{
    if (count == 0) {
        return 0;
    }
    if (count < 0 || !buf) {
        RVK_THROW(RVKIllegalArgumentError(0, nullptr),
                  "ZUMInputStream::readFully - negative count or null destination");
    }
    return readAll(count, [&](int done) { return read(buf + done, count - done); });
}

void ZUMInputStream::close()
{
}

RVK_bool ZUMInputStream::canUnread()
{
    return 0;
}

void ZUMInputStream::unread(char const*, int)
{
    throw "not implemented";
}

RVK_bool ZUMInputStream::canTimeout() const
{
    return 0;
}

RVK_bool ZUMInputStream::setTimeout(int)
{
    RVK_THROW(RVKUnsupportedOperationError(0, nullptr),
              "RVK_bool ZUMInputStream::setTimeout( int time_limit_sec )");
}

int ZUMInputStream::getTimeout() const
{
    return 0;
}

RVK_bool ZUMInputStream::canCancel() const
{
    return 0;
}

RVK_bool ZUMInputStream::setCancel(int)
{
    RVK_THROW(RVKUnsupportedOperationError(0, nullptr), "ZUMInputStream::setCancel");
}

int ZUMInputStream::getCancel() const
{
    return 0;
}

void ZUMInputStream::cancel()
{
    RVK_THROW(RVKUnsupportedOperationError(0, nullptr), "ZUMInputStream::cancel");
}

// ---- ZUMFilterInputStream ---------------------------------------------------

ZUMFilterInputStream::ZUMFilterInputStream() : p_upstream(nullptr)
{
}

ZUMFilterInputStream::~ZUMFilterInputStream() = default;

void ZUMFilterInputStream::close()
{
    if (p_upstream) {
        p_upstream->close();
    }
}

RVK_bool ZUMFilterInputStream::canTimeout() const
{
    return p_upstream ? p_upstream->canTimeout() : 0;
}

RVK_bool ZUMFilterInputStream::setTimeout(int time_limit_sec)
{
    return p_upstream ? p_upstream->setTimeout(time_limit_sec) : 0;
}

int ZUMFilterInputStream::getTimeout() const
{
    return p_upstream ? p_upstream->getTimeout() : 0;
}

RVK_bool ZUMFilterInputStream::canCancel() const
{
    return p_upstream ? p_upstream->canCancel() : 0;
}

RVK_bool ZUMFilterInputStream::setCancel(int setting)
{
    return p_upstream ? p_upstream->setCancel(setting) : 0;
}

int ZUMFilterInputStream::getCancel() const
{
    return p_upstream ? p_upstream->getCancel() : 0;
}

void ZUMFilterInputStream::cancel()
{
    if (p_upstream) {
        p_upstream->cancel();
    }
}

void ZUMFilterInputStream::wrap(ZUMInputStream& upstream)
{
    if (p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr),
                  "ZUMFilterInputStream::wrap - stream is already wrapped");
    }
    p_upstream = &upstream;
}

void ZUMFilterInputStream::unWrap()
{
    if (!p_upstream) {
        RVK_THROW(RVKIllegalStateError(0, nullptr),
                  "ZUMFilterInputStream::unWrap - stream not wrapped");
    }
    if (!p_upstream->canUnread()) {
        RVK_THROW(RVKAssertError(0, nullptr),
                  "ZUMFilterInputStream::unWrap - upstream can't unread");
    }
    p_upstream = nullptr;
}
