// XML escaping of plain and of markup-heavy text.

#include "BenchSupport.h"
#include "ZUMStreams.h"

namespace {

std::size_t const kXmlBytes = 8u << 20;

// XML-escaping stream -> memory, 16 KiB writes; measured over the bytes
// written to the escaping stream.
void escape(benchmark::State& state, std::string const& (*text_of)(std::size_t))
{
    std::string const& text = text_of(kXmlBytes);
    ZUMMemoryOutputStream sink(static_cast<int>(text.size() * 3), kBlock);
    SteadyAllocations allocs;
    std::int64_t total = 0;
    for (auto _ : state) {
        sink.reset();
        ZUMXmlEncodeOutputStream xml(sink);
        xml.write(text.data(), kBlock);
        allocs.open();
        std::uint64_t calls = 0;
        for (std::size_t at = kBlock; at < text.size(); at += kBlock) {
            xml.write(text.data() + at, kBlock);
            ++calls;
        }
        allocs.close(calls);
        total += static_cast<std::int64_t>(text.size());
    }
    state.SetBytesProcessed(total);
    allocs.report(state);
}

}  // namespace

void registerXmlBenchmarks()
{
    benchmark::RegisterBenchmark("xml/ours:plain", escape, wordText)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("xml/ours:markup", escape, markupText)->Unit(benchmark::kMillisecond);
}
