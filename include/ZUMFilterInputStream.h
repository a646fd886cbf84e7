#ifndef ZUM_FILTER_INPUT_STREAM_H
#define ZUM_FILTER_INPUT_STREAM_H

#include "ZUMExport.h"
#include "ZUMInputStream.h"

// The base of every input filter: a stream that reads another stream, its
// upstream, through the non-owning link p_upstream (null while unwrapped).
//
// close() and the timeout and cancel operations are passed to the upstream
// with exactly one call each; unwrapped, they return false or 0 and do
// nothing. The destructor does nothing: it neither unwraps nor closes nor
// deletes the upstream.
class ZUM_API ZUMFilterInputStream : public ZUMInputStream {
public:
    // An unwrapped filter.
    ZUMFilterInputStream();
    ~ZUMFilterInputStream() override;

    int read(RVKByteBuffer& buffer, int count) override = 0;
    int read(char* buf, int count) override = 0;
    int read() override = 0;
    // Closes the upstream, if any; the filter stays wrapped.
    void close() override;
    // The upstream's answer, or false while unwrapped.
    RVK_bool canTimeout() const override;
    // The upstream's answer (its exceptions pass), or false while unwrapped.
    RVK_bool setTimeout(int time_limit_sec) override;
    // The upstream's answer, or 0 while unwrapped.
    int getTimeout() const override;
    // The upstream's answer, or false while unwrapped.
    RVK_bool canCancel() const override;
    // The upstream's answer (its exceptions pass), or false while unwrapped.
    RVK_bool setCancel(int setting) override;
    // The upstream's answer, or 0 while unwrapped.
    int getCancel() const override;
    // Cancels the upstream, if any.
    void cancel() override;

    // Attaches the filter to `upstream`. Raises RVKIllegalStateError
    // ("ZUMFilterInputStream::wrap - stream is already wrapped") when wrapped.
    virtual void wrap(ZUMInputStream& upstream);
    // Detaches the filter. Raises RVKIllegalStateError when unwrapped, and
    // RVKAssertError ("ZUMFilterInputStream::unWrap - upstream can't unread")
    // when the upstream's canUnread() is false; the filter then stays wrapped.
    virtual void unWrap();

    // The upstream, or null while unwrapped.
    ZUMInputStream* getUpstream() const { return p_upstream; }

protected:
    ZUMInputStream* p_upstream;  // not owned

private:
    ZUMFilterInputStream(ZUMFilterInputStream const&) = delete;
    ZUMFilterInputStream& operator=(ZUMFilterInputStream const&) = delete;
};

#endif
