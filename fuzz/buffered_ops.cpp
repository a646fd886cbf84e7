// Fuzz target: sequences of buffered-stream operations (the read forms,
// readFully, readline, unread, unWrap, wrap, reads of the source while
// unwrapped) driven by the input, checked against a model of the byte
// sequence.
//
// Input: 8 setting bytes, a 2-byte length L (modulo 2048), L bytes of source
// content, then the operations, one code byte and its argument bytes each.
//   0: bits 0-3 the refill size, bit 4 empty reads, bit 5 source failures,
//      bit 6 the source refuses unread bytes
//   1-4: source read sizes; 5-6: failing reads; 7: unused
//
// The model: while wrapped, the stream delivers `front` (bytes known to be in
// the buffered stream) and then `back` (the source's remaining bytes) in
// order; unread puts bytes in front. Unwrapped, the buffered stream delivers
// only `front` and then -1, and the source `back`. Every delivered byte, every
// line and the final drain are compared with it, so nothing may be lost,
// duplicated or reordered.

#include "FuzzSupport.h"

namespace {

int const k_refill_sizes[16] = {1, 2, 3, 4, 5, 7, 8, 16, 31, 64, 100, 255, 256, 1000, 4096, 65536};

// The line readline() gives for `s`: up to the first CR LF that no NUL byte
// precedes, or all of `s` when there is none.
std::string firstLine(std::string const& s, bool& complete)
{
    for (std::size_t i = 0; i < s.size() && s[i] != '\0'; ++i) {
        if (s[i] == '\r' && i + 1 < s.size() && s[i + 1] == '\n') {
            complete = true;
            return s.substr(0, i + 2);
        }
    }
    complete = false;
    return s;
}

struct Model {
    std::string front;  // bytes in the buffered stream's hands, known exactly
    std::string back;   // the source's remaining bytes
    bool wrapped = true;
    bool synced = true;  // false once a failed call left the split unknown

    // The bytes the buffered stream can deliver.
    std::string deliverable() const { return wrapped ? front + back : front; }

    // `n` bytes were delivered by the buffered stream; they must be the next.
    void consume(std::string const& got)
    {
        if (!synced) {
            return;
        }
        std::string all = deliverable();
        FUZZ_CHECK(all.compare(0, got.size(), got) == 0 && got.size() <= all.size());
        if (got.size() <= front.size()) {
            front.erase(0, got.size());
        } else {
            back.erase(0, got.size() - front.size());
            front.clear();
        }
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzBytes in(data, size);
    std::uint8_t mode = in.byte();
    Schedule sourceSteps(in.take(4));
    std::uint8_t fail1 = in.byte();
    std::uint8_t fail2 = in.byte();
    in.byte();
    std::string content = in.take(in.u16() % 2048);

    FuzzSource source(content, sourceSteps, (mode & 16) ? 64 : 0, !(mode & 64));
    if (mode & 32) {
        source.failAt(1 + fail1 % 32, 2 + fail2);
    }
    ZUMBufferedInputStream bis(source, k_refill_sizes[mode & 15]);
    Model model;
    model.back = content;

    char buf[512];
    std::size_t ops = 0;
    while (in.left() > 0) {
        ++ops;
        std::uint8_t op = in.byte();
        int n = in.byte();
        int failuresBefore = source.failures();
        std::string got;
        try {
            switch (op % 10) {
            case 0:
            case 1:
            case 2: {
                // A block read in one of the forms (and the single-byte read).
                int r = readOnce(bis, static_cast<std::uint8_t>(op / 10), n == 0 ? 1 : n, got);
                FUZZ_CHECK(r == -1 || r == static_cast<int>(got.size()));
                if (r == -1 && model.synced) {
                    FUZZ_CHECK(model.deliverable().empty());
                }
                model.consume(got);
                break;
            }
            case 3: {
                int r = bis.readFully(buf, n);
                if (r == -1) {
                    // Ended first: everything deliverable was delivered into buf.
                    std::string all = model.deliverable();
                    FUZZ_CHECK(!model.synced || all.size() < static_cast<std::size_t>(n));
                    if (model.synced) {
                        FUZZ_CHECK(all.compare(0, all.size(), buf, all.size()) == 0);
                    }
                    model.consume(all);
                } else {
                    FUZZ_CHECK(r == n);
                    model.consume(std::string(buf, static_cast<std::size_t>(n)));
                }
                break;
            }
            case 4: {
                RVKByteBuffer b(0, 16);
                int r;
                try {
                    r = bis.readFully(b, n);
                } catch (...) {
                    // The bytes read before the failure stay appended.
                    model.consume(std::string(b.str(), static_cast<std::size_t>(b.pcount())));
                    throw;
                }
                got.assign(b.str(), static_cast<std::size_t>(b.pcount()));
                FUZZ_CHECK(r == -1 ? static_cast<int>(got.size()) < n : r == n && static_cast<int>(got.size()) == n);
                if (r == -1 && model.synced) {
                    FUZZ_CHECK(got == model.deliverable());
                }
                model.consume(got);
                break;
            }
            case 5: {
                RVKByteBuffer line(0, 16);
                line << "x";  // readline appends
                int r = bis.readline(line);
                FUZZ_CHECK(line.str()[0] == 'x');
                got.assign(line.str() + 1, static_cast<std::size_t>(line.pcount() - 1));
                FUZZ_CHECK(r == -1 ? got.empty() : r == static_cast<int>(got.size()));
                if (model.synced) {
                    bool complete = false;
                    std::string want = firstLine(model.deliverable(), complete);
                    if (!model.wrapped && !complete) {
                        want.clear();  // unwrapped: only a whole buffered line
                    }
                    FUZZ_CHECK(got == want);
                    FUZZ_CHECK((r == -1) == want.empty());
                }
                model.consume(got);
                break;
            }
            case 6: {
                std::string bytes = in.take(static_cast<std::size_t>(n % 40));
                bis.unread(bytes.data(), static_cast<int>(bytes.size()));
                model.front = bytes + model.front;
                break;
            }
            case 7: {
                if (!model.wrapped) {
                    bool refused = false;
                    try {
                        bis.unWrap();
                    } catch (RVKIllegalStateError const&) {
                        refused = true;
                    }
                    FUZZ_CHECK(refused);
                    break;
                }
                int buffered = bis.buffered();
                try {
                    bis.unWrap();
                } catch (char const* text) {
                    FUZZ_CHECK(std::strcmp(text, "can't unwrap") == 0);
                    FUZZ_CHECK(model.wrapped && buffered > 0 && !source.canUnread());
                    break;
                }
                // Everything buffered went back in front of the source.
                model.wrapped = false;
                if (model.synced) {
                    FUZZ_CHECK(source.remaining() == model.front + model.back);
                }
                model.back = source.remaining();
                model.front.clear();
                model.synced = true;
                FUZZ_CHECK(bis.buffered() == 0);
                break;
            }
            case 8: {
                bool wasWrapped = bis.getUpstream() != nullptr;
                try {
                    bis.wrap(source);
                } catch (RVKIllegalStateError const&) {
                    FUZZ_CHECK(wasWrapped);
                    break;
                }
                FUZZ_CHECK(!wasWrapped && !model.wrapped);
                model.wrapped = true;
                break;
            }
            default: {
                // The source itself, while the buffered stream is unwrapped.
                if (model.wrapped) {
                    break;
                }
                int r = readOnce(source, 0, n == 0 ? 1 : n, got);
                FUZZ_CHECK(r == -1 ? model.back.empty() && got.empty() : r == static_cast<int>(got.size()));
                FUZZ_CHECK(model.back.compare(0, got.size(), got) == 0);
                model.back.erase(0, got.size());
                break;
            }
            }
        } catch (char const* text) {
            FUZZ_CHECK(source.failures() > failuresBefore && std::strcmp(text, "source failed") == 0);
            if (op % 10 == 3) {
                model.synced = false;  // bytes read before the failure are in buf, uncounted
            }
        } catch (ZUMIOException const&) {
            FUZZ_CHECK(source.failures() > failuresBefore);
            if (op % 10 == 3) {
                model.synced = false;
            }
        }
    }

    // Wrapped again, the stream delivers exactly what the model holds.
    if (bis.getUpstream() == nullptr) {
        bis.wrap(source);
        model.wrapped = true;
    }
    std::string rest;
    std::size_t const limit = size + 200;
    for (std::size_t r = 0;; ++r) {
        FUZZ_CHECK(r < limit);
        try {
            if (readOnce(bis, 0, 512, rest) < 0) {
                break;
            }
        } catch (char const*) {
        } catch (ZUMIOException const&) {
        }
    }
    if (model.synced) {
        FUZZ_CHECK(rest == model.deliverable());
    }
    FUZZ_CHECK(retrying(source, [&] { return bis.read(); }) == -1);
    (void)ops;
    return 0;
}
