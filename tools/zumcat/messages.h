// zumcat: how a run can fail, and the one plain line each failure prints.
//
// Three kinds of failure end a run, each with its exit status:
//   Usage       the command line is wrong (status 2);
//   Failure     the input is bad or a read or write failed (status 1);
//   BrokenPipe  standard output's reader has gone: the run ends quietly
//               (status 1; unless SIGPIPE is ignored, the signal ends it
//               first).
// The library's exceptions become a Failure through describe(): the English
// texts of their catalog messages, never a class name or an assertion.
#ifndef ZUMCAT_MESSAGES_H
#define ZUMCAT_MESSAGES_H

#include <string>

class RVKThrowable;

namespace zumcat {

int const k_exit_success = 0;
int const k_exit_failure = 1;
int const k_exit_usage = 2;

// The command line cannot be used; `text` says why.
struct Usage {
    std::string text;
};

// Bad input or a failed read or write; `text` says what and where.
struct Failure {
    std::string text;
};

// Standard output was closed by its reader (a broken pipe): nothing to say.
struct BrokenPipe {
};

// The English text of message `number` of the stream library's catalog.
std::string catalogText(unsigned long number);

// One line for a library exception: the texts of its messages joined by ": ",
// or a plain description of what the exception class stands for.
std::string describe(RVKThrowable const& thrown);

// A byte as a person reads it in a message: 'a' for printable ASCII, 0x0a
// for anything else.
std::string byteText(unsigned char byte);

// The line that reports a failure of the operation `op` (empty: none yet):
// "zumcat: OP: TEXT".
void report(std::string const& op, std::string const& text);

}  // namespace zumcat

#endif
