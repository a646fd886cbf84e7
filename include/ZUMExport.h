#ifndef ZUM_EXPORT_H
#define ZUM_EXPORT_H

// Marks the classes and functions that libZUMStreamsDLL.so exports. The
// library is built with hidden visibility: whatever a public header does not
// mark stays inside it.
#if defined(__GNUC__)
#define ZUM_API __attribute__((visibility("default")))
#else
#define ZUM_API
#endif

#endif
