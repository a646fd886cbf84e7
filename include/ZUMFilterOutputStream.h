#ifndef ZUM_FILTER_OUTPUT_STREAM_H
#define ZUM_FILTER_OUTPUT_STREAM_H

#include "ZUMExport.h"
#include "ZUMOutputStream.h"

// The base of every output filter: a stream that writes to another stream,
// its downstream, through the non-owning link p_downstream (null while
// unwrapped). flush() and close() of this base do nothing and are not passed
// down. The destructor does nothing: it neither flushes nor unwraps.
class ZUM_API ZUMFilterOutputStream : public ZUMOutputStream {
public:
    // A filter wrapped around `downstream` from the start.
    explicit ZUMFilterOutputStream(ZUMOutputStream& downstream);
    // An unwrapped filter.
    ZUMFilterOutputStream();
    ~ZUMFilterOutputStream() override;

    void write(char const* bytes, int count) override = 0;

    // Attaches the filter. Raises RVKAssertError "RVK_ASSERT(!p_downstream);"
    // when wrapped.
    virtual void wrap(ZUMOutputStream& downstream);
    // Flushes the filter (its own virtual flush), then detaches it. Raises
    // RVKAssertError "RVK_ASSERT(p_downstream);" when unwrapped; a failing
    // flush leaves the filter wrapped.
    virtual void unWrap();

    // The downstream, or null while unwrapped.
    ZUMOutputStream* getDownstream() const { return p_downstream; }

protected:
    ZUMOutputStream* p_downstream;  // not owned

private:
    ZUMFilterOutputStream(ZUMFilterOutputStream const&) = delete;
    ZUMFilterOutputStream& operator=(ZUMFilterOutputStream const&) = delete;
};

#endif
