// Chunked bodies written by HTTP software of others (tests/data/chunked, made
// by make_fixtures.py there), decoded under many read patterns.

#include <gtest/gtest.h>

#include <filesystem>

#include "TestFiles.h"
#include "TestStreams.h"

TEST(ChunkedFixtures, DecodeByteForByteUnderEveryReadPattern)
{
    // Bytes per upstream read (0: all at once), an empty read after each piece,
    // the buffered stream's size, and the read form and count on the chunked stream.
    struct Pattern { std::size_t piece; bool zeros; int bis_size; Form form; int count; } const patterns[] = {
        {0, false, 4096, Form::Buffer, 1 << 20},  // one long read
        {1, false, 64, Form::Buffer, 100},       {1, true, 1, Form::Buffer, 100},
        {1, true, 7, Form::Array, 7},            {5, true, 3, Form::Byte, 0},
        {13, false, 4096, Form::Array, 1},       {3, true, 16, Form::Buffer, 4096},
    };
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(ZUM_TEST_DATA_DIR "/chunked")) {
        if (entry.path().extension() == ".body") {
            names.push_back("chunked/" + entry.path().stem().string());
        }
    }
    ASSERT_GE(names.size(), 5u);  // Python's and nginx's
    for (auto const& name : names) {
        std::string const body = dataFile(name + ".body");
        std::string const expected = dataFile(name + ".expected");
        std::string const trailer = dataFile(name + ".trailer");
        for (auto const& p : patterns) {
            ScriptedInputStream up(ScriptedInputStream::pieces(body, {p.piece}, p.zeros));
            ZUMBufferedInputStream bis(up, p.bis_size);
            EXPECT_EQ(readChunkedBody(bis, false, p.count, p.form), expected) << name << " piece " << p.piece;
            EXPECT_EQ(drain(bis, 0, Form::Line), trailer) << name << " piece " << p.piece;
        }
    }
}
