// The benchmark program: Google Benchmark's console output, then one table
// that sets our figures against the peers' (medians when repetitions are
// asked for), with the targets and the steady-state allocations.

#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "BenchSupport.h"

void registerGzipBenchmarks();
void registerBase64Benchmarks();
void registerFramingBenchmarks();
void registerXmlBenchmarks();

namespace {

struct Row {
    char const* scenario;
    char const* ours;        // benchmark name
    char const* peer_label;  // nullptr: no peer
    char const* peer;        // benchmark name
    double min_ratio;        // 0: none; ours/peer must be at least this (1: ahead)
    double min_mbs;          // 0: none
};

Row const k_rows[] = {
    {"gunzip 64 MiB: memory > buffered > chunked > gzip", "gunzip/ours:chain",
     "zlib inflate loop (limit)", "gunzip/zlib", 0.95, 0},
    {"gunzip 64 MiB: memory > buffered > chunked > gzip", "gunzip/ours:chain",
     "Boost gzip_decompressor", "gunzip/boost", 1.0, 0},
    {"gunzip 64 MiB: memory > buffered > chunked > gzip", "gunzip/ours:chain",
     "Poco InflatingInputStream", "gunzip/poco", 1.0, 0},
    {"gunzip 64 MiB: memory > gzip", "gunzip/ours:memory", "zlib inflate loop (limit)",
     "gunzip/zlib", 0, 0},
    {"gzip 64 MiB: gzip > chunked > buffered > memory", "gzip/ours:chain",
     "zlib deflate loop (limit)", "gzip/zlib", 0.97, 0},
    {"gzip 64 MiB: gzip > chunked > buffered > memory", "gzip/ours:chain",
     "Boost gzip_compressor", "gzip/boost", 1.0, 0},
    {"gzip 64 MiB: gzip > chunked > buffered > memory", "gzip/ours:chain",
     "Poco DeflatingOutputStream", "gzip/poco", 1.0, 0},
    {"gzip 64 MiB: gzip > memory", "gzip/ours:memory", "zlib deflate loop (limit)", "gzip/zlib",
     0, 0},
    {"Base64 core encode, 1 MiB (raw bytes in)", "base64/core:encode", nullptr, nullptr, 0, 2000},
    {"Base64 core decode, 1.4 MB, length given (text in)", "base64/core:decodeN", nullptr,
     nullptr, 0, 3000},
    {"Base64 core decode, 1.4 MB, NUL-terminated (text in)", "base64/core:decode", nullptr,
     nullptr, 0, 0},
    {"Base64 output stream > memory, 16 KiB writes", "base64/ours:output", "Poco Base64Encoder",
     "base64/poco:encoder", 3.0, 1500},
    {"Base64 input stream over buffered, 16 KiB reads", "base64/ours:input",
     "Poco Base64Decoder", "base64/poco:decoder", 3.0, 0},
    {"readline, 80-byte CR LF lines, 8 MiB", "readline/ours", "std::getline on istringstream",
     "readline/std::getline", 1.0, 0},
    {"read() byte by byte through buffered", "read()/ours", "istream::get on istringstream",
     "read()/std::istream::get", 0, 300},
    {"chunked, 16 KiB chunks, 16 KiB reads, 16 MiB", "chunked/ours",
     "our buffered block reads", "chunked/buffered", 0.9, 0},
    {"XML escaping, text without special bytes", "xml/ours:plain", nullptr, nullptr, 0, 1000},
    {"XML escaping, markup-heavy text", "xml/ours:markup", nullptr, nullptr, 0, 0},
    {"block input stream, 16 KiB reads", "block/ours", nullptr, nullptr, 0, 0},
    {"file input > buffered, 16 KiB reads", "file/input", nullptr, nullptr, 0, 0},
    {"file output, 16 KiB writes to /dev/null", "file/output", nullptr, nullptr, 0, 0},
    {"std::istream adapter > buffered, 16 KiB reads", "std/input", nullptr, nullptr, 0, 0},
    {"buffered > std::ostream adapter, 1 KiB writes", "std/output", nullptr, nullptr, 0, 0},
    {"std::istream on ZUMInputStreamBuf, 16 KiB reads", "streambuf/input", nullptr, nullptr, 0,
     0},
    {"std::ostream on ZUMOutputStreamBuf, 1 KiB writes", "streambuf/output", nullptr, nullptr,
     0, 0},
};

struct Figures {
    double mbs = NAN;
    double allocs = NAN;
    bool median = false;
};

class TableReporter : public benchmark::ConsoleReporter {
public:
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
            auto rate = run.counters.find("bytes_per_second");
            if (rate != run.counters.end()) {
                f.mbs = rate->second.value / 1e6;
            }
            auto allocs = run.counters.find("allocs/call");
            if (allocs != run.counters.end()) {
                f.allocs = allocs->second.value;
            }
        }
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::printf("\n| scenario | ours MB/s | peer | peer MB/s | ours/peer | target | met | "
                    "allocs/call (ours) |\n");
        std::printf("|---|---:|---|---:|---:|---|---|---:|\n");
        for (Row const& row : k_rows) {
            printRow(row);
        }
        std::fflush(stdout);
    }

private:
    Figures figures(char const* name) const
    {
        auto it = name ? m_figures.find(name) : m_figures.end();
        return it == m_figures.end() ? Figures() : it->second;
    }

    void printRow(Row const& row) const
    {
        Figures ours = figures(row.ours);
        Figures peer = figures(row.peer);
        char ours_mbs[32] = "", peer_mbs[32] = "", ratio[32] = "", allocs[32] = "";
        if (!std::isnan(ours.mbs)) {
            std::snprintf(ours_mbs, sizeof ours_mbs, "%.0f", ours.mbs);
        }
        if (!std::isnan(peer.mbs)) {
            std::snprintf(peer_mbs, sizeof peer_mbs, "%.0f", peer.mbs);
        }
        bool have_ratio = !std::isnan(ours.mbs) && !std::isnan(peer.mbs) && peer.mbs > 0;
        double r = have_ratio ? ours.mbs / peer.mbs : NAN;
        if (have_ratio) {
            std::snprintf(ratio, sizeof ratio, "%.2f", r);
        }
        if (!std::isnan(ours.allocs)) {
            std::snprintf(allocs, sizeof allocs, "%g", ours.allocs);
        }
        std::string target;
        std::string met;
        if (row.min_mbs > 0) {
            target = ">= " + std::to_string(static_cast<int>(row.min_mbs)) + " MB/s";
        }
        if (row.min_ratio > 0) {
            char t[48];
            if (row.min_ratio == 1.0) {
                std::snprintf(t, sizeof t, "ahead of peer");
            } else {
                std::snprintf(t, sizeof t, ">= %.2gx peer", row.min_ratio);
            }
            target += (target.empty() ? "" : ", ") + std::string(t);
        }
        if (!target.empty()) {
            bool known = !std::isnan(ours.mbs) && (row.min_ratio <= 0 || have_ratio);
            bool ok = known && (row.min_mbs <= 0 || ours.mbs >= row.min_mbs) &&
                      (row.min_ratio <= 0 ||
                       (row.min_ratio == 1.0 ? r > 1.0 : r >= row.min_ratio));
            met = known ? (ok ? "yes" : "NO") : "n/a";
        } else {
            target = "reported";
        }
        std::printf("| %s | %s | %s | %s | %s | %s | %s | %s |\n", row.scenario, ours_mbs,
                    row.peer_label ? row.peer_label : "", peer_mbs, ratio, target.c_str(),
                    met.c_str(), allocs);
    }

    std::map<std::string, Figures> m_figures;
};

}  // namespace

int main(int argc, char** argv)
{
    registerGzipBenchmarks();
    registerBase64Benchmarks();
    registerFramingBenchmarks();
    registerXmlBenchmarks();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
