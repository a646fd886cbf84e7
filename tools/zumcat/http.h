// zumcat: reading an HTTP/1.1 message and a chunked body; the chunked
// stream checks the framing, this part the fields and Content-Length.
#ifndef ZUMCAT_HTTP_H
#define ZUMCAT_HTTP_H

#include <vector>

#include "ZUMOutputStream.h"

namespace zumcat {

class InputBuffer;

// Reads one HTTP/1.1 message from `input`: start line, header lines, body
// (chunked or Content-Length framing, gzip content coding), trailer. Writes
// them under headings to `out`, or the decoded body alone with `bodyOnly`.
// Raises Failure for a message that is malformed or cut short, after writing
// what was decoded.
void http(InputBuffer& input, ZUMOutputStream& out, bool bodyOnly, std::vector<char>& buf);

// Decodes a body in the chunked transfer coding from `input` to `out` and
// reads its trailer up to the empty line that ends it. Raises the chunked
// stream's exception for malformed or cut framing, and Failure for a trailer
// without that empty line, after writing what was decoded.
void unchunk(InputBuffer& input, ZUMOutputStream& out, std::vector<char>& buf);

}  // namespace zumcat

#endif
