#ifndef RVK_MESSAGE_STRING_H
#define RVK_MESSAGE_STRING_H

#include "RVKExport.h"
#include "RVKMessageBase.h"

// A message that is a plain text.
class RVK_API RVKMessageString : public RVKMessageBase {
public:
    // A message of `text` (copied); copies hold their own text.
    explicit RVKMessageString(I18NString const& text);
    RVKMessageString(RVKMessageString const&) = default;
    RVKMessageString& operator=(RVKMessageString const&) = default;
    ~RVKMessageString() override;

    RVKMessageString* clone() const override;
    char const* getClassName() const override;
    I18NString& format(char const* prefix, char const* suffix, I18NString& out) const override;

    // The text.
    I18NString const& getString() const { return m_text; }

private:
    I18NString m_text;
};

#endif
