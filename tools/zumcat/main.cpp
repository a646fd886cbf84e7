// zumcat: reads a file or standard input through a chain of the library's
// streams and writes the result to standard output.
//
//   zumcat [--progress] OPERATION [OPTIONS] [FILE]
//
// The pieces, each in its own file:
//   options     the operations' help texts and the command line
//   operations  the chains, one per operation
//   http        HTTP/1.1 messages: start line, fields, body framing
//   streams     the program's own streams: counting, positions, output
//   progress    the --progress report
//   messages    failures and their one-line texts
//
// Exit status: 0 success, 1 bad input or an I/O error, 2 a command line that
// cannot be used. A failure prints one line on standard error after what was
// decoded has been written; a broken pipe ends the program quietly.

#include <cstdio>
#include <exception>
#include <new>

#include "RVKCore.h"
#include "messages.h"
#include "operations.h"
#include "options.h"

using namespace zumcat;

int main(int argc, char** argv)
{
    Options options;
    try {
        options = parseArguments(argc, argv);
    } catch (Usage const& usage) {
        report("", usage.text);
        if (argc < 2) {
            std::fputs(usageText().c_str(), stderr);
        }
        return k_exit_usage;
    }
    switch (options.action) {
    case Options::HELP:
        std::fputs(options.op ? operationHelp(*options.op).c_str() : usageText().c_str(), stdout);
        return k_exit_success;
    case Options::VERSION:
        std::fputs(versionText().c_str(), stdout);
        return k_exit_success;
    case Options::RUN:
        break;
    }

    std::string const op = options.op->name;
    try {
        run(options);
        return k_exit_success;
    } catch (Failure const& failure) {
        std::fflush(stdout);
        report(op, failure.text);
    } catch (BrokenPipe const&) {
    } catch (RVKThrowable const& thrown) {
        std::fflush(stdout);
        report(op, describe(thrown));
    } catch (std::bad_alloc const&) {
        report(op, "out of memory");
    } catch (...) {
        // Text exceptions of the library and anything else unforeseen.
        report(op, "internal error: an unexpected exception; please report it with the input");
    }
    return k_exit_failure;
}
