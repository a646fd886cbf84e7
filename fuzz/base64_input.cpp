// Fuzz target: the Base64 input stream on arbitrary text.
//
// Input: 6 setting bytes, then the text.
//   0: bit 0 empty reads from the source
//   1-3: source read sizes; 4-5: read sizes and forms
//
// Checks: the reads end within a number bounded by the input size; the text
// is taken in groups of four characters whatever the source's read sizes, so
// the delivered bytes are the groups decoded one by one, up to the first
// group that is not Base64, which raises RVKAssertError
// "RVK_ASSERT(sta == 0);"; a final group of one to three characters is
// dropped.

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzBytes in(data, size);
    std::uint8_t mode = in.byte();
    Schedule sourceSteps(in.take(3));
    Schedule readSteps(in.take(2));
    std::string text = in.rest();

    // The groups, decoded on their own, up to the first bad one.
    std::string expected;
    bool bad = false;
    for (std::size_t at = 0; at + 4 <= text.size(); at += 4) {
        char group[5] = {text[at], text[at + 1], text[at + 2], text[at + 3], '\0'};
        char out[3];
        unsigned n = 0;
        if (RVKBase64Decode(group, out, &n) != 0) {
            bad = true;
            break;
        }
        expected.append(out, n);
    }

    FuzzSource source(text, sourceSteps, (mode & 1) ? 32 : 0, false);
    ZUMBase64InputStream b64;
    b64.wrap(source);

    // A read that does not end delivers a byte; -1 can also come from an
    // empty source read at the start of a group (there is no end state).
    std::size_t const limit = size + 100;
    std::string got;
    bool raised = false;
    for (std::size_t reads = 0;; ++reads) {
        FUZZ_CHECK(reads < limit);
        std::uint8_t step = readSteps.next();
        try {
            if (readOnce(b64, step, readCount(step), got) < 0 && source.atEnd()) {
                break;
            }
        } catch (RVKAssertError const& e) {
            FUZZ_CHECK(e.getText() && std::strcmp(e.getText(), "RVK_ASSERT(sta == 0);") == 0);
            raised = true;
            break;
        }
    }
    FUZZ_CHECK(raised == bad);
    if (raised) {
        // Bytes of the call that met the bad group are not delivered.
        FUZZ_CHECK(expected.compare(0, got.size(), got) == 0 && got.size() <= expected.size());
        for (int i = 0; i < 4; ++i) {  // and the stream stays usable
            try {
                if (b64.read() == -1) {
                    break;
                }
            } catch (RVKAssertError const&) {
            }
        }
    } else {
        FUZZ_CHECK(got == expected);
        FUZZ_CHECK(b64.read() == -1);
    }
    b64.unWrap();
    return 0;
}
