#ifndef RVK_EXPORT_H
#define RVK_EXPORT_H

// Marks the classes and functions that libRVKCore.so exports. The library is
// built with hidden visibility: whatever a public header does not mark stays
// inside it.
#if defined(__GNUC__)
#define RVK_API __attribute__((visibility("default")))
#else
#define RVK_API
#endif

#endif
