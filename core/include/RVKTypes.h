#ifndef RVK_TYPES_H
#define RVK_TYPES_H

// Basic types shared by the core layer and the stream library.

// Boolean of the can..., open, isOpen, setTimeout and setCancel operations:
// an integer type where true is 1 and false is 0.
typedef int RVK_bool;

// Severity of an exception or message. The stream library raises severity 1.
enum RVKSeverity {
    RVK_SEVERITY_NONE = 0,
    RVK_SEVERITY_ERROR = 1,
    RVK_SEVERITY_WARNING = 2,
    RVK_SEVERITY_INFO = 3
};

// A place in the source: the raising file and line, in that order.
struct RVKFileLocation {
    char const* file;  // the source file name
    int line;          // its line
};

#endif
