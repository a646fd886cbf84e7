// Fuzz target: the strict Base64 input stream on arbitrary text, against a
// reference decoder written from the rules below, one character at a time.
//
// Input: 6 setting bytes, then the text.
//   0: bit 0 skip white space; bit 1 empty reads from the source;
//      bit 2 the source fails on its 2nd and 5th reads
//   1-3: source read sizes; 4-5: read sizes and forms
//
// The rules: the text is groups of four characters of the alphabet
// A-Z a-z 0-9 + /, where the last one or two of a group may be '=' (then the
// group gives 2 or 1 bytes; its unused bits are ignored) and groups follow
// one another, padded or not. With the flag, CR, LF, tab and space are
// skipped anywhere. The first fault ends the text: a byte outside the
// alphabet ("invalid character 'c' at byte N", or 0xHH outside printable
// ASCII), '=' first or second in a group, or a third-place '=' followed by a
// letter ("misplaced padding '=' at byte N", N that of the first misplaced
// '='), or the end inside a group ("K characters left over from the group at
// byte N", N that of its first character).
//
// Checks: the reads end within a number bounded by the input size; every
// byte of the groups before the fault is delivered, whatever the read sizes,
// the source's piece sizes, its empty reads and its failures (retried);
// then the fault is raised with its message number and text, and again by
// the next read; a clean text ends in -1, and so does the read after it.

#include "FuzzSupport.h"

namespace {

struct Reference {
    std::string bytes;
    unsigned long number = 0;  // 0: no fault
    std::string text;
};

int valueOf(char c)
{
    static char const alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    char const* at = c ? std::strchr(alphabet, c) : nullptr;
    return at ? static_cast<int>(at - alphabet) : -1;
}

Reference reference(std::string const& text, bool skipBlanks)
{
    Reference ref;
    char group[4];
    std::size_t at[4];
    std::size_t len = 0;
    char message[96];
    for (std::size_t i = 0; i < text.size(); ++i) {
        char const c = text[i];
        if (skipBlanks && (c == '\r' || c == '\n' || c == '\t' || c == ' ')) {
            continue;
        }
        unsigned char const u = static_cast<unsigned char>(c);
        if (valueOf(c) >= 0 && len == 3 && group[2] == '=') {
            std::snprintf(message, sizeof message, "misplaced padding '=' at byte %zu", at[2]);
        } else if (valueOf(c) < 0 && c != '=') {
            std::snprintf(message, sizeof message,
                          u >= 0x20 && u < 0x7f ? "invalid character '%c' at byte %zu" : "invalid character 0x%02x at byte %zu",
                          u, i);
        } else if (c == '=' && len < 2) {
            std::snprintf(message, sizeof message, "misplaced padding '=' at byte %zu", i);
        } else {
            group[len] = c;
            at[len++] = i;
            if (len == 4) {
                unsigned v = 0;
                int bytes = 3;
                for (char g : group) {
                    v = (v << 6) | static_cast<unsigned>(g == '=' ? (--bytes, 0) : valueOf(g));
                }
                for (int b = 0; b < bytes; ++b) {
                    ref.bytes.push_back(static_cast<char>(v >> (16 - 8 * b)));
                }
                len = 0;
            }
            continue;
        }
        ref.number = ZUMMessage::BASE64_MALFORMED;
        ref.text = message;
        return ref;
    }
    if (len > 0) {
        std::snprintf(message, sizeof message, "%zu character%s left over from the group at byte %zu", len,
                      len == 1 ? "" : "s", at[0]);
        ref.number = ZUMMessage::BASE64_TRUNCATED;
        ref.text = message;
    }
    return ref;
}

// The catalog number and text of a fault of the stream, or 0 for any other
// exception.
unsigned long faultOf(ZUMIOException const& e, std::string& text)
{
    for (unsigned long number : {ZUMMessage::BASE64_MALFORMED, ZUMMessage::BASE64_TRUNCATED}) {
        if (e.hasMessage(number)) {
            FUZZ_CHECK(e.getMessageCount() == 2);
            auto const* message = dynamic_cast<RVKMessageString const*>(&e.getMessageAt(1));
            FUZZ_CHECK(message);
            text = message->getString().c_str();
            return number;
        }
    }
    return 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzBytes in(data, size);
    std::uint8_t const mode = in.byte();
    Schedule sourceSteps(in.take(3));
    Schedule readSteps(in.take(2));
    std::string const text = in.rest();
    bool const skipBlanks = mode & 1;
    Reference const ref = reference(text, skipBlanks);

    FuzzSource source(text, sourceSteps, (mode & 2) ? 32 : 0, false);
    if (mode & 4) {
        source.failAt(2, 5);
    }
    ZUMStrictBase64InputStream b64(source, skipBlanks ? 1 : 0);

    std::size_t const limit = size + 100;
    std::string got;
    unsigned long number = 0;
    std::string message;
    for (std::size_t reads = 0;; ++reads) {
        FUZZ_CHECK(reads < limit);
        std::uint8_t const step = readSteps.next();
        int const failures = source.failures();
        try {
            if (readOnce(b64, step, readCount(step), got) < 0) {
                break;
            }
        } catch (ZUMIOException const& e) {
            number = faultOf(e, message);
            if (number != 0) {
                break;
            }
            FUZZ_CHECK(source.failures() > failures);  // the source's failure, passed on
        } catch (char const*) {
            FUZZ_CHECK(false);  // text exceptions are converted
        }
    }
    FUZZ_CHECK(got == ref.bytes);
    FUZZ_CHECK(number == ref.number);
    FUZZ_CHECK(message == ref.text);

    // The end and the fault both stay.
    try {
        FUZZ_CHECK(b64.read() == -1 && number == 0);
    } catch (ZUMIOException const& e) {
        std::string again;
        FUZZ_CHECK(faultOf(e, again) == number && again == message);
    }
    b64.unWrap();
    return 0;
}
