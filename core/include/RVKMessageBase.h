#ifndef RVK_MESSAGE_BASE_H
#define RVK_MESSAGE_BASE_H

#include "I18NString.h"
#include "RVKExport.h"
#include "RVKTypes.h"

// The base of every message that an exception can carry.
class RVK_API RVKMessageBase {
public:
    RVKMessageBase() : m_severity(RVK_SEVERITY_NONE) {}
    virtual ~RVKMessageBase();

    // A copy of its own class on the heap; the caller deletes it.
    virtual RVKMessageBase* clone() const = 0;
    // The class name, for instance "RVKMessageString".
    virtual char const* getClassName() const = 0;
    // Appends `prefix`, the message's text and `suffix` to `out`; returns `out`.
    virtual I18NString& format(char const* prefix, char const* suffix, I18NString& out) const = 0;
    // As format; `indent` spaces go in front. Returns `out`.
    virtual I18NString& toString(char const* prefix, char const* suffix, I18NString& out,
                                 int indent) const;
    // The severity of the message, and setting it.
    virtual RVKSeverity getSeverity() const { return m_severity; }
    virtual void setSeverity(RVKSeverity severity) { m_severity = severity; }

protected:
    // Copies keep the severity; for the derived classes' copies.
    RVKMessageBase(RVKMessageBase const&) = default;
    RVKMessageBase& operator=(RVKMessageBase const&) = default;

private:
    RVKSeverity m_severity;
};

#endif
