// zumcat: the operations it knows, their help texts, and the command line.
//
//   zumcat [--progress] OPERATION [OPTIONS] [FILE]
//   zumcat --help | help [OPERATION] | --version
#ifndef ZUMCAT_OPTIONS_H
#define ZUMCAT_OPTIONS_H

#include <string>
#include <vector>

namespace zumcat {

struct Options;
class InputCounter;
class StandardOutput;

// Runs an operation from the input to standard output, through the copy
// buffer (operations.h).
using Handler = void (*)(Options const&, InputCounter&, StandardOutput&, std::vector<char>&);

struct Operation {
    char const* name;
    char const* synopsis;  // after "zumcat [--progress] "
    char const* help;      // what it does, one paragraph
    Handler run;           // does it
};

// What the command line asks for.
struct Options {
    enum Action { RUN, HELP, VERSION };
    Action action = RUN;
    Operation const* op = nullptr;  // RUN: the operation; HELP: null for the overview
    std::string file;               // empty or "-": standard input
    bool body = false;              // http --body
    bool progress = false;
    int size = 4096;  // chunk --size
    int wrap = 0;     // base64 --wrap
};

// Parses argv. Raises Usage for a command line that cannot be run.
Options parseArguments(int argc, char** argv);

// The overview: synopsis of every operation, the options and exit statuses.
std::string usageText();
// The help of one operation.
std::string operationHelp(Operation const& op);
// "zumcat VERSION": the version of the library this program was built with.
std::string versionText();

}  // namespace zumcat

#endif
