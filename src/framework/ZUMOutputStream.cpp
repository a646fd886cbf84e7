#include "ZUMOutputStream.h"

#include "RVKMacros.h"
#include "ZUMFilterOutputStream.h"

// ---- ZUMOutputStream --------------------------------------------------------

ZUMOutputStream::~ZUMOutputStream() = default;

void ZUMOutputStream::flush()
{
}

void ZUMOutputStream::close()
{
}

// ---- ZUMFilterOutputStream --------------------------------------------------

ZUMFilterOutputStream::ZUMFilterOutputStream(ZUMOutputStream& downstream)
    : p_downstream(&downstream)
{
}

ZUMFilterOutputStream::ZUMFilterOutputStream() : p_downstream(nullptr)
{
}

ZUMFilterOutputStream::~ZUMFilterOutputStream() = default;

void ZUMFilterOutputStream::wrap(ZUMOutputStream& downstream)
{
    RVK_ASSERT(!p_downstream);
    p_downstream = &downstream;
}

void ZUMFilterOutputStream::unWrap()
{
    RVK_ASSERT(p_downstream);
    flush();
    p_downstream = nullptr;
}
