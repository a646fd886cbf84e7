#ifndef RVK_EXCEPTION_H
#define RVK_EXCEPTION_H

#include "RVKExport.h"
#include "RVKMessageSet.h"
#include "RVKThrowable.h"

// A throwable that carries a severity and a list of messages: an RVKThrowable
// first and an RVKMessageSet second. what() lists the messages after the
// code, each as its English text where the catalog knows it.
class RVK_API RVKException : public RVKThrowable, public RVKMessageSet {
public:
    // Copies the code, text, back trace, severity and every message; from a
    // code or a text (copied), with RVK_SEVERITY_NONE when none is given.
    RVKException(RVKException const& other);
    explicit RVKException(long code);
    RVKException(RVKSeverity severity, long code);
    explicit RVKException(char const* text);
    RVKException(RVKSeverity severity, char const* text);
    ~RVKException() override;

    // Copies as the copy constructor does; returns the exception.
    RVKException& operator=(RVKException const& other);
    // Appends a copy of `message`; returns the exception.
    RVKException& operator<<(RVKMessageBase const& message);

    // The severity given at construction.
    RVKSeverity getSeverity() const { return m_severity; }

    RVK_THROWABLE_OPERATIONS(RVKException);
    I18NString getMessage() override;
    I18NString toString() override;
    I18NString getMessage() const override;
    I18NString& toString(char const* prefix, char const* suffix, I18NString& out,
                         int withTrace) override;

protected:
    void renderTail(std::string& out) const override;

private:
    RVKSeverity m_severity;
};

#endif
