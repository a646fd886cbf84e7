// XML escaping of plain and of markup-heavy text.

#include <memory>

#include "BenchSupport.h"
#include "ZUMStreams.h"

namespace {

std::size_t const kXmlBytes = 8u << 20;

// XML-escaping stream -> memory, 16 KiB writes; counted in the bytes written
// to the escaping stream.
Pass escape(std::string const& text)
{
    auto sink = std::make_shared<ZUMMemoryOutputStream>(static_cast<int>(text.size() * 3), kBlock);
    std::string const* in = &text;
    return [in, sink](SteadyAllocations& allocs) {
        sink->reset();
        ZUMXmlEncodeOutputStream xml(*sink);
        return writePieces(xml, *in, kBlock, allocs, [] {});
    };
}

}  // namespace

Pass xmlPlain()
{
    return escape(wordText(kXmlBytes));
}

Pass xmlMarkup()
{
    return escape(markupText(kXmlBytes));
}
