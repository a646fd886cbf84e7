#ifndef RVK_THROWABLE_H
#define RVK_THROWABLE_H

#include <cstddef>
#include <exception>
#include <string>
#include <vector>

#include "I18NString.h"
#include "RVKExport.h"
#include "RVKTypes.h"

// One entry of a back trace: where a throwable was raised or passed through,
// the method text given there (may be null) and the name of the raising macro
// ("RVK_THROW", "RVK_RETHROW"). The entry keeps its own copies of the texts.
struct RVK_API RVKBackTraceEntry {
    // An entry for `where`, copying both texts (a null macro name gives "");
    // copies hold their own texts.
    RVKBackTraceEntry(RVKFileLocation const& where, char const* methodText, char const* macroName);
    RVKBackTraceEntry(RVKBackTraceEntry const& other);
    RVKBackTraceEntry& operator=(RVKBackTraceEntry const& other);

    // Where the throwable was raised or passed through.
    RVKFileLocation location;
    char const* method;  // null, or points into this entry's own copy
    char const* macro;   // never null ("" when none was given)

private:
    void point();
    std::string m_method_text;
    std::string m_macro_text;
    bool m_has_method;
};

// Declares the four per-class operations of a throwable: copy on the heap,
// hurl as its own class, its own name.
#define RVK_THROWABLE_OPERATIONS(Class)                                        \
    Class* clone() const override;                                             \
    [[noreturn]] void hurl(RVKFileLocation const& where, char const* method,   \
                           char const* macro) override;                        \
    char const* getThrowableName() const override

// The root of every exception of the core layer and the stream library.
// Holds a code, an optional text (copied) and a back trace. what() gives a
// one-line rendering: class name, code, text and the messages of an
// RVKException with their English texts where the catalog knows them.
class RVK_API RVKThrowable : public std::exception {
public:
    // With `code` and a copy of `text` (may be null); copies hold their own
    // text and back trace.
    RVKThrowable(long code, char const* text);
    RVKThrowable(RVKThrowable const&) = default;
    RVKThrowable& operator=(RVKThrowable const&) = default;
    ~RVKThrowable() override;

    // A copy of its own class on the heap; the caller deletes it.
    virtual RVKThrowable* clone() const;
    // Adds the back-trace entry and throws a copy of its own class.
    [[noreturn]] virtual void hurl(RVKFileLocation const& where, char const* method,
                                   char const* macro);
    // The rendered message (the same text as what()).
    virtual I18NString getMessage();
    // The class name, for instance "RVKAssertError".
    virtual char const* getThrowableName() const;
    // The one-line rendering, as a string.
    virtual I18NString toString();
    virtual I18NString getMessage() const;
    // Appends `prefix`, the rendering and `suffix` to `out`; with `withTrace`
    // non-zero the back trace follows, one entry per line. Returns `out`.
    virtual I18NString& toString(char const* prefix, char const* suffix, I18NString& out,
                                 int withTrace);

    // Readable one-line rendering for generic handlers.
    char const* what() const noexcept override;

    // Appends a back-trace entry.
    void addBackTrace(RVKFileLocation const& where, char const* method, char const* macro);

    // The code given at construction.
    long getCode() const { return m_code; }
    // The text given at construction, or null.
    char const* getText() const { return m_has_text ? m_text.c_str() : nullptr; }
    // The number of back-trace entries.
    std::size_t getBackTraceSize() const { return m_trace.size(); }
    // Entry i (0 is the oldest). Raises RVKIllegalArgumentError when out of range.
    RVKBackTraceEntry const& getBackTraceEntry(std::size_t i) const;

protected:
    // Appends the rendering of the class name, code and text to `out`.
    void renderHead(std::string& out) const;
    // Subclasses with more to say (messages) append it here.
    virtual void renderTail(std::string& out) const;
    std::string render() const;

private:
    long m_code;
    std::string m_text;
    bool m_has_text;
    std::vector<RVKBackTraceEntry> m_trace;
    mutable std::string m_what;
};

// Defines the operations declared by RVK_THROWABLE_OPERATIONS (in a source
// file that includes RVKMacros.h).
#define RVK_DEFINE_THROWABLE_OPERATIONS(Class)                                  \
    Class* Class::clone() const { return RVK_GUARDED_NEW(new Class(*this)); }  \
    void Class::hurl(RVKFileLocation const& where, char const* method,          \
                     char const* macro)                                         \
    {                                                                           \
        addBackTrace(where, method, macro);                                     \
        throw Class(*this);                                                     \
    }                                                                           \
    char const* Class::getThrowableName() const { return #Class; }

// Declares an error class of the core layer: an RVKThrowable made from a code
// and a text.
#define RVK_DECLARE_ERROR(Class)                                               \
    class RVK_API Class : public RVKThrowable {                                \
    public:                                                                    \
        Class(long code, char const* text) : RVKThrowable(code, text) {}       \
        RVK_THROWABLE_OPERATIONS(Class);                                       \
    }

#endif
