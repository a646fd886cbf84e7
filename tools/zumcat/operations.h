// zumcat: the operations, each a chain of the library's streams between the
// input and standard output, and the pieces they share.
#ifndef ZUMCAT_OPERATIONS_H
#define ZUMCAT_OPERATIONS_H

#include <string>
#include <vector>

#include "ZUMInputStream.h"
#include "ZUMOutputStream.h"

namespace zumcat {

struct Options;
class InputBuffer;
class InputCounter;
class StandardOutput;

// The size of the buffered stream's refills and of the copy buffer.
int const k_io_size = 65536;

// Copies everything `in` delivers to `out`, through `buf`.
void copy(ZUMInputStream& in, ZUMOutputStream& out, std::vector<char>& buf);

// Reads `in` to its end and returns the number of bytes it delivered.
long long drain(ZUMInputStream& in, std::vector<char>& buf);

// Decodes the gzip members that `in` delivers, one after the other, to `out`.
// `in` reads from `input` and takes bytes back (unread), so each member's
// first two bytes are looked at before the gzip stream parses its header:
// a first member that does not begin with 1F 8B is "not in gzip format".
// Returns -1 when the members fill `in` to its end, or the input offset of
// the first byte after the last member that does not start another one
// (trailing garbage, left unread in `in`). An `in` that delivers nothing at
// all holds no member and returns -1 when `mayBeEmpty`, and is a truncated
// member otherwise. Raises the gzip stream's exceptions.
long long gunzipMembers(ZUMInputStream& in, InputBuffer const& input, ZUMOutputStream& out,
                        std::vector<char>& buf, bool mayBeEmpty);

// The text for `bytes` bytes of trailing garbage from input offset `at`.
std::string trailingGarbage(long long bytes, long long at);

// The operations, each the handler of its entry in the table of options.cpp:
// from `in` to `out`, through the copy buffer `buf`, with the command line's
// settings in `o`.
void runHttp(Options const& o, InputCounter& in, StandardOutput& out, std::vector<char>& buf);
void runGunzip(Options const& o, InputCounter& in, StandardOutput& out, std::vector<char>& buf);
void runGzip(Options const& o, InputCounter& in, StandardOutput& out, std::vector<char>& buf);
void runUnchunk(Options const& o, InputCounter& in, StandardOutput& out, std::vector<char>& buf);
void runChunk(Options const& o, InputCounter& in, StandardOutput& out, std::vector<char>& buf);
void runBase64(Options const& o, InputCounter& in, StandardOutput& out, std::vector<char>& buf);
void runUnbase64(Options const& o, InputCounter& in, StandardOutput& out, std::vector<char>& buf);
void runXmlEscape(Options const& o, InputCounter& in, StandardOutput& out, std::vector<char>& buf);

// Runs the operation of `options` on its input. Raises Failure, BrokenPipe,
// and the library's exceptions.
void run(Options const& options);

}  // namespace zumcat

#endif
