// The benchmark program. Each row of the table is one Google Benchmark
// benchmark that runs our pass and the peer's pass in turn (A B, then B A, and
// so on), each timed by the thread's CPU clock, so that a ratio is measured
// pair by pair in the same run however the machine's speed drifts. Google
// Benchmark's own rows go to stderr; stdout gets one table of the medians
// over the repetitions, with the targets and the steady-state allocations.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "BenchSupport.h"

Pass gunzipChain();
Pass gunzipMemory();
Pass gunzipZlib();
Pass gunzipBoost();
Pass gunzipPoco();
Pass gunzipChainMulti();
Pass gunzipChainLibrary();
Pass gunzipChainFast();
Pass gunzipMemoryFast();
Pass gzipChain();
Pass gzipMemory();
Pass gzipZlib();
Pass gzipBoost();
Pass gzipPoco();
Pass gzipZlibLevel1();
Pass gzipChainFast();
Pass gzipChainReal();
Pass gzipChainFastReal();
Pass gzipZlibReal();
Pass gzipZlibLevel1Real();
Pass gzipBoostReal();
Pass gzipPocoReal();
Pass base64CoreEncode();
Pass base64CoreDecodeN();
Pass base64CoreDecode();
Pass base64Output();
Pass base64Input();
Pass base64PocoEncoder();
Pass base64PocoDecoder();
Pass base64StrictInput();
Pass base64StrictMimeInput();
Pass base64PocoMimeDecoder();
Pass readlineOurs();
Pass readlineGetline();
Pass readByteOurs();
Pass readByteIstream();
Pass chunkedOurs();
Pass strictChunkedOurs();
Pass bufferedOurs();
Pass blockOurs();
Pass fileInput();
Pass fileOutput();
Pass stdInput();
Pass stdOutput();
Pass streamBufInput();
Pass streamBufOutput();
Pass xmlPlain();
Pass xmlMarkup();

namespace {

struct Row {
    char const* id;          // the benchmark's name
    char const* scenario;
    PassMaker ours;
    char const* peer_label;  // nullptr: no peer
    PassMaker peer;
    double min_ratio;        // 0: none; ours/peer at least this
    double min_mbs;          // 0: none
    bool ahead = false;      // ours/peer above 1
    double max_out = 0;      // 0: none; our output at most this times the peer's
    bool smaller = false;    // our output below the peer's
};

char const k_gunzip[] = "gunzip 64 MiB: memory > buffered > chunked > gzip";
char const k_gunzip_fast[] =
    "gunzip 64 MiB: memory > buffered > chunked > gzip, fast inflate build (ISA-L)";
char const k_gzip[] = "gzip 64 MiB: gzip > chunked > buffered > memory";
char const k_gzip_fast[] =
    "gzip 64 MiB: gzip > chunked > buffered > memory, fast deflate build (ISA-L)";
char const k_gzip_fast_real[] =
    "gzip real text: gzip > chunked > buffered > memory, fast deflate build (ISA-L)";

Row const k_rows[] = {
    {"gunzip/chain-vs-zlib", k_gunzip, gunzipChain, "zlib inflate loop (limit)", gunzipZlib, 0.95, 0},
    {"gunzip/chain-vs-boost", k_gunzip, gunzipChain, "Boost gzip_decompressor", gunzipBoost, 0, 0, true},
    {"gunzip/chain-vs-poco", k_gunzip, gunzipChain, "Poco InflatingInputStream", gunzipPoco, 0, 0, true},
    {"gunzip/chain-vs-memory", k_gunzip, gunzipChain, "our memory > gzip (no framing)",
     gunzipMemory, 0, 0},
    {"gunzip/multi-vs-chain", "gunzip 64 MiB, one member: the same chain, multi-member gzip on top",
     gunzipChainMulti, "our chain (single-member gzip)", gunzipChainLibrary, 0.98, 0},
    {"gunzip/memory-vs-zlib", "gunzip 64 MiB: memory > gzip", gunzipMemory,
     "zlib inflate loop (limit)", gunzipZlib, 0, 0},
    {"gunzip/fast-chain-vs-zlib", k_gunzip_fast, gunzipChainFast, "zlib inflate loop", gunzipZlib,
     2.5, 0},
    {"gunzip/fast-chain-vs-boost", k_gunzip_fast, gunzipChainFast, "Boost gzip_decompressor",
     gunzipBoost, 0, 0, true},
    {"gunzip/fast-chain-vs-poco", k_gunzip_fast, gunzipChainFast, "Poco InflatingInputStream",
     gunzipPoco, 0, 0, true},
    {"gunzip/fast-chain-vs-chain", k_gunzip_fast, gunzipChainFast, "our chain, default build (zlib)",
     gunzipChain, 0, 0},
    {"gunzip/fast-memory-vs-zlib", "gunzip 64 MiB: memory > gzip, fast inflate build (ISA-L)",
     gunzipMemoryFast, "zlib inflate loop", gunzipZlib, 0, 0},
    {"gzip/chain-vs-zlib", k_gzip, gzipChain, "zlib deflate loop (limit)", gzipZlib, 0.97, 0},
    {"gzip/chain-vs-boost", k_gzip, gzipChain, "Boost gzip_compressor", gzipBoost, 0, 0, true},
    {"gzip/chain-vs-poco", k_gzip, gzipChain, "Poco DeflatingOutputStream", gzipPoco, 0, 0, true},
    {"gzip/memory-vs-zlib", "gzip 64 MiB: gzip > memory", gzipMemory, "zlib deflate loop (limit)",
     gzipZlib, 0, 0},
    {"gzip/fast-chain-vs-zlib", k_gzip_fast, gzipChainFast, "zlib deflate loop, default level",
     gzipZlib, 0, 0},
    {"gzip/fast-chain-vs-zlib1", k_gzip_fast, gzipChainFast, "zlib deflate loop, level 1",
     gzipZlibLevel1, 0, 0},
    {"gzip/fast-chain-vs-boost", k_gzip_fast, gzipChainFast, "Boost gzip_compressor", gzipBoost, 0,
     0},
    {"gzip/fast-chain-vs-poco", k_gzip_fast, gzipChainFast, "Poco DeflatingOutputStream", gzipPoco,
     0, 0},
    {"gzip/fast-chain-vs-chain", k_gzip_fast, gzipChainFast, "our chain, default build (zlib)",
     gzipChain, 0, 0},
    {"gzip/real-fast-chain-vs-zlib", k_gzip_fast_real, gzipChainFastReal,
     "zlib deflate loop, default level", gzipZlibReal, 6.0, 0, false, 1.2},
    {"gzip/real-fast-chain-vs-zlib1", k_gzip_fast_real, gzipChainFastReal,
     "zlib deflate loop, level 1", gzipZlibLevel1Real, 1.5, 0, false, 0, true},
    {"gzip/real-fast-chain-vs-boost", k_gzip_fast_real, gzipChainFastReal, "Boost gzip_compressor",
     gzipBoostReal, 0, 0, true},
    {"gzip/real-fast-chain-vs-poco", k_gzip_fast_real, gzipChainFastReal,
     "Poco DeflatingOutputStream", gzipPocoReal, 0, 0, true},
    {"gzip/real-fast-chain-vs-chain", k_gzip_fast_real, gzipChainFastReal,
     "our chain, default build (zlib)", gzipChainReal, 0, 0},
    {"base64/core-encode", "Base64 core encode, 1 MiB (raw bytes in)", base64CoreEncode, nullptr,
     nullptr, 0, 2000},
    {"base64/core-decodeN", "Base64 core decode, 1.4 MB, length given (text in)",
     base64CoreDecodeN, nullptr, nullptr, 0, 3000},
    {"base64/core-decode", "Base64 core decode, 1.4 MB, NUL-terminated (text in)",
     base64CoreDecode, nullptr, nullptr, 0, 0},
    {"base64/output-vs-poco", "Base64 output stream > memory, 16 KiB writes", base64Output,
     "Poco Base64Encoder", base64PocoEncoder, 3.0, 1500},
    {"base64/input-vs-poco", "Base64 input stream over buffered, 16 KiB reads", base64Input,
     "Poco Base64Decoder", base64PocoDecoder, 3.0, 0},
    {"base64/strict-vs-poco", "strict Base64 input stream over buffered, 16 KiB reads",
     base64StrictInput, "Poco Base64Decoder", base64PocoDecoder, 3.0, 0},
    {"base64/strict-vs-old", "strict Base64 input stream over buffered, 16 KiB reads",
     base64StrictInput, "our Base64 input stream", base64Input, 0, 0},
    {"base64/strict-mime-vs-poco",
     "strict Base64 input stream, 76-character CR LF lines skipped, 16 KiB reads",
     base64StrictMimeInput, "Poco Base64Decoder (skips them too)", base64PocoMimeDecoder, 0, 0},
    {"readline/vs-getline", "readline, 80-byte CR LF lines, 8 MiB", readlineOurs,
     "std::getline on istringstream", readlineGetline, 1.0, 0},
    {"read()/vs-istream-get", "read() byte by byte through buffered, 4 MiB", readByteOurs,
     "istream::get on istringstream", readByteIstream, 0, 300},
    {"chunked/vs-buffered", "chunked, 16 KiB chunks, 16 KiB reads, 16 MiB", chunkedOurs,
     "our buffered block reads", bufferedOurs, 0.9, 0},
    {"chunked/strict-vs-lenient", "strict chunked, 16 KiB chunks, 16 KiB reads, 16 MiB", strictChunkedOurs,
     "our lenient chunked stream", chunkedOurs, 0.9, 0},
    {"xml/plain", "XML escaping, text without special bytes", xmlPlain, nullptr, nullptr, 0, 1000},
    {"xml/markup", "XML escaping, markup-heavy text", xmlMarkup, nullptr, nullptr, 0, 0},
    {"block/read", "block input stream, 16 KiB reads", blockOurs, nullptr, nullptr, 0, 0},
    {"file/input", "file input > buffered, 16 KiB reads", fileInput, nullptr, nullptr, 0, 0},
    {"file/output", "file output, 16 KiB writes to /dev/null", fileOutput, nullptr, nullptr, 0, 0},
    {"std/input", "std::istream adapter > buffered, 16 KiB reads", stdInput, nullptr, nullptr, 0, 0},
    {"std/output", "buffered > std::ostream adapter, 1 KiB writes", stdOutput, nullptr, nullptr, 0,
     0},
    {"streambuf/input", "std::istream on ZUMInputStreamBuf, 16 KiB reads", streamBufInput, nullptr,
     nullptr, 0, 0},
    {"streambuf/output", "std::ostream on ZUMOutputStreamBuf, 1 KiB writes", streamBufOutput,
     nullptr, nullptr, 0, 0},
};

double threadSeconds()
{
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

double median(std::vector<double> values)
{
    if (values.empty()) {
        return NAN;
    }
    std::sort(values.begin(), values.end());
    std::size_t mid = values.size() / 2;
    return values.size() % 2 ? values[mid] : (values[mid - 1] + values[mid]) / 2;
}

struct Sides {
    Pass ours;
    Pass peer;
};

// The passes of a row, made once per run (the repetitions reuse their data
// and sinks) and run once untimed when made: page faults of new sinks and
// first-touch effects stay out of the figures.
Sides const& sidesOf(Row const* row)
{
    static std::map<Row const*, Sides> made;
    auto it = made.find(row);
    if (it == made.end()) {
        Sides sides{row->ours(), row->peer ? row->peer() : nullptr};
        SteadyAllocations unused;
        if (sides.ours) {
            sides.ours(unused);
        }
        if (sides.peer) {
            sides.peer(unused);
        }
        it = made.emplace(row, std::move(sides)).first;
    }
    return it->second;
}

void runRow(benchmark::State& state, Row const* row)
{
    Pass const& ours = sidesOf(row).ours;
    Pass const& peer = sidesOf(row).peer;
    if (!ours) {
        state.SkipWithError("not available here");
        return;
    }
    SteadyAllocations allocs;
    SteadyAllocations unused;
    double ours_seconds = 0;
    double peer_seconds = 0;
    std::int64_t ours_bytes = 0;
    std::int64_t peer_bytes = 0;
    std::vector<double> ratios;
    std::int64_t out[2] = {-1, -1};  // output sizes of the last passes: ours, peer
    bool ours_first = true;
    for (auto _ : state) {
        double dt[2] = {0, 0};  // ours, peer
        std::int64_t bytes[2] = {0, 0};
        for (int turn = 0; turn < 2; ++turn) {
            int side = (turn == 0) == ours_first ? 0 : 1;
            if (side == 1 && !peer) {
                continue;
            }
            takeOutputSize();
            double t0 = threadSeconds();
            bytes[side] = side == 0 ? ours(allocs) : peer(unused);
            dt[side] = threadSeconds() - t0;
            out[side] = takeOutputSize();
        }
        ours_seconds += dt[0];
        ours_bytes += bytes[0];
        if (peer) {
            peer_seconds += dt[1];
            peer_bytes += bytes[1];
            ratios.push_back((static_cast<double>(bytes[0]) / dt[0]) /
                             (static_cast<double>(bytes[1]) / dt[1]));
        }
        ours_first = !ours_first;
    }
    state.counters["ours_MB/s"] = static_cast<double>(ours_bytes) / ours_seconds / 1e6;
    if (peer) {
        state.counters["peer_MB/s"] = static_cast<double>(peer_bytes) / peer_seconds / 1e6;
        state.counters["ratio"] = median(ratios);
    }
    if (out[0] >= 0) {
        state.counters["ours_out"] = static_cast<double>(out[0]);
    }
    if (peer && out[1] >= 0) {
        state.counters["peer_out"] = static_cast<double>(out[1]);
    }
    allocs.report(state);
}

struct Figures {
    double ours = NAN;
    double peer = NAN;
    double ratio = NAN;
    double allocs = NAN;
    double ours_out = NAN;
    double peer_out = NAN;
    bool median = false;
};

class TableReporter : public benchmark::ConsoleReporter {
public:
    TableReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(std::vector<Run> const& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (Run const& run : runs) {
            if (run.error_occurred) {
                continue;
            }
            bool median = run.run_type == Run::RT_Aggregate;
            if (median && run.aggregate_name != "median") {
                continue;
            }
            Figures& f = m_figures[run.run_name.function_name];
            if (f.median && !median) {
                continue;
            }
            f.median = median;
            f.ours = counter(run, "ours_MB/s");
            f.peer = counter(run, "peer_MB/s");
            f.ratio = counter(run, "ratio");
            f.allocs = counter(run, "allocs/call");
            f.ours_out = counter(run, "ours_out");
            f.peer_out = counter(run, "peer_out");
        }
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::printf("\n| scenario | ours MB/s | peer | peer MB/s | ours/peer | target | met | "
                    "allocs/call (ours) | ours out (bytes) | peer out (bytes) |\n");
        std::printf("|---|---:|---|---:|---:|---|---|---:|---:|---:|\n");
        for (Row const& row : k_rows) {
            printRow(row);
        }
        std::fflush(stdout);
    }

private:
    static double counter(Run const& run, char const* name)
    {
        auto it = run.counters.find(name);
        return it == run.counters.end() ? NAN : it->second.value;
    }

    static std::string format(char const* pattern, double value)
    {
        if (std::isnan(value)) {
            return "";
        }
        char text[32];
        std::snprintf(text, sizeof text, pattern, value);
        return text;
    }

    void printRow(Row const& row) const
    {
        auto it = m_figures.find(row.id);
        Figures f = it == m_figures.end() ? Figures() : it->second;
        std::string target;
        if (row.min_mbs > 0) {
            target = format(">= %.0f MB/s", row.min_mbs);
        }
        if (row.min_ratio > 0) {
            target += (target.empty() ? "" : ", ") + format(">= %.2gx peer", row.min_ratio);
        }
        if (row.ahead) {
            target += (target.empty() ? "" : ", ") + std::string("ahead of peer");
        }
        if (row.max_out > 0) {
            target += (target.empty() ? "" : ", ") + format("out <= %.2gx peer's", row.max_out);
        }
        if (row.smaller) {
            target += (target.empty() ? "" : ", ") + std::string("out < peer's");
        }
        bool needs_ratio = row.min_ratio > 0 || row.ahead;
        bool needs_out = row.max_out > 0 || row.smaller;
        std::string met;
        if (target.empty()) {
            target = "reported";
        } else {
            bool known = !std::isnan(f.ours) && (!needs_ratio || !std::isnan(f.ratio)) &&
                         (!needs_out || (!std::isnan(f.ours_out) && !std::isnan(f.peer_out)));
            bool ok = known && (row.min_mbs <= 0 || f.ours >= row.min_mbs) &&
                      (row.min_ratio <= 0 || f.ratio >= row.min_ratio) &&
                      (!row.ahead || f.ratio > 1.0) &&
                      (row.max_out <= 0 || f.ours_out <= row.max_out * f.peer_out) &&
                      (!row.smaller || f.ours_out < f.peer_out);
            met = known ? (ok ? "yes" : "NO") : "n/a";
        }
        std::printf("| %s | %s | %s | %s | %s | %s | %s | %s | %s | %s |\n", row.scenario,
                    format("%.0f", f.ours).c_str(), row.peer_label ? row.peer_label : "",
                    format("%.0f", f.peer).c_str(), format("%.3f", f.ratio).c_str(),
                    target.c_str(), met.c_str(), format("%g", f.allocs).c_str(),
                    format("%.0f", f.ours_out).c_str(), format("%.0f", f.peer_out).c_str());
    }

    std::map<std::string, Figures> m_figures;
};

}  // namespace

int main(int argc, char** argv)
{
    for (Row const& row : k_rows) {
        benchmark::RegisterBenchmark(row.id, runRow, &row)->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    TableReporter reporter;
    reporter.SetOutputStream(&std::cerr);
    reporter.SetErrorStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
