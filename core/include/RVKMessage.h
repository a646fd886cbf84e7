#ifndef RVK_MESSAGE_H
#define RVK_MESSAGE_H

#include "RVKExport.h"
#include "RVKMessageBase.h"

// A numbered message of a message catalog. Formatting looks the number up in
// the built-in English catalog (the catalog "rvkzummsgs" is built in) and
// falls back to "<catalog>#0x<number in hex>" for numbers it does not know.
class RVK_API RVKMessage : public RVKMessageBase {
public:
    // Message `number` of the catalog `msgFile`; copies name the same message.
    RVKMessage(I18NString const& msgFile, unsigned long number);
    RVKMessage(RVKMessage const&) = default;
    RVKMessage& operator=(RVKMessage const&) = default;
    ~RVKMessage() override;

    RVKMessage* clone() const override;
    char const* getClassName() const override;
    I18NString& format(char const* prefix, char const* suffix, I18NString& out) const override;
    // The catalog name.
    virtual I18NString const& getMsgFile() const { return m_msg_file; }
    // Names another catalog.
    virtual void setMsgFile(I18NString& msgFile) { m_msg_file = msgFile; }

    // The message number.
    unsigned long getMsgNumber() const { return m_number; }

private:
    I18NString m_msg_file;
    unsigned long m_number;
};

// The English text of message `number` of the catalog `msgFile`, or null when
// the built-in catalog does not know it.
RVK_API char const* RVKMessageCatalogText(char const* msgFile, unsigned long number);

#endif
