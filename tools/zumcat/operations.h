// zumcat: the operations, each a chain of the library's streams between the
// input and standard output, and the pieces they share.
#ifndef ZUMCAT_OPERATIONS_H
#define ZUMCAT_OPERATIONS_H

#include <vector>

#include "ZUMInputStream.h"
#include "ZUMOutputStream.h"

namespace zumcat {

struct Options;
class InputCounter;
class StandardOutput;

// The size of the buffered stream's refills and of the copy buffer.
int const k_io_size = 65536;

// Copies everything `in` delivers to `out`, through `buf`.
void copy(ZUMInputStream& in, ZUMOutputStream& out, std::vector<char>& buf);

// Reads `in` to its end and returns the number of bytes it delivered.
long long drain(ZUMInputStream& in, std::vector<char>& buf);

// Looks at the first two bytes of `in` and takes them back. Raises Failure
// "not in gzip format" when they are not the gzip magic 1F 8B, which says more
// than the header failure the gzip stream would report. Returns false when
// `in` delivered nothing.
bool checkGzipMagic(ZUMInputStream& in);

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
