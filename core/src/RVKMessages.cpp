#include <cstdio>
#include <cstring>

#include "RVKMacros.h"
#include "RVKMessage.h"
#include "RVKMessageBase.h"
#include "RVKMessageSet.h"
#include "RVKMessageString.h"
#include "RVKIllegalArgumentError.h"

// ---- the built-in catalog ---------------------------------------------------

namespace {

struct CatalogEntry {
    unsigned long number;
    char const* text;
};

// The English texts of the stream library's catalog "rvkzummsgs".
CatalogEntry const k_rvkzummsgs[] = {
    {0x91fdd700UL, "an I/O error was reported as text"},
    {0x91f2b0d2UL, "the file cannot be opened for reading"},
    {0x91fe8ba5UL, "the file cannot be read"},
    {0x91f36c62UL, "the compressed input ended before the gzip member was complete"},
    {0xc1c209cfUL, "the input is not in gzip format"},
    {0xc1c58e80UL, "unsupported compression method or unknown gzip header flags"},
    {0x91f342d7UL, "the compressed data is corrupt"},
    {0xc1c34d1fUL, "CRC-32 mismatch: the data does not match the checksum in the gzip trailer"},
    {0xc1c66a72UL, "length mismatch: the data does not match the length in the gzip trailer"},
    {0xc1c7a3e1UL, "bytes that are not a gzip member follow the last member"},
    {0xc1c81b44UL, "the chunked framing is malformed"},
    {0x91f4d2a6UL, "the chunked body ended before its last chunk"},
    {0xc1c9e857UL, "the Base64 text is malformed"},
    {0x91f5a0b9UL, "the Base64 text ended inside a group of four characters"},
};

}  // namespace

char const* RVKMessageCatalogText(char const* msgFile, unsigned long number)
{
    if (!msgFile || std::strcmp(msgFile, "rvkzummsgs") != 0) {
        return nullptr;
    }
    for (CatalogEntry const& entry : k_rvkzummsgs) {
        if (entry.number == number) {
            return entry.text;
        }
    }
    return nullptr;
}

// ---- RVKMessageBase ---------------------------------------------------------

RVKMessageBase::~RVKMessageBase() = default;

I18NString& RVKMessageBase::toString(char const* prefix, char const* suffix, I18NString& out,
                                     int indent) const
{
    for (int i = 0; i < indent; ++i) {
        out.append(" ");
    }
    return format(prefix, suffix, out);
}

// ---- RVKMessage -------------------------------------------------------------

RVKMessage::RVKMessage(I18NString const& msgFile, unsigned long number)
    : m_msg_file(msgFile), m_number(number)
{
}

RVKMessage::~RVKMessage() = default;

RVKMessage* RVKMessage::clone() const
{
    return RVK_GUARDED_NEW(new RVKMessage(*this));
}

char const* RVKMessage::getClassName() const
{
    return "RVKMessage";
}

I18NString& RVKMessage::format(char const* prefix, char const* suffix, I18NString& out) const
{
    out.append(prefix);
    if (char const* text = RVKMessageCatalogText(m_msg_file.c_str(), m_number)) {
        out.append(text);
    } else {
        char number[32];
        std::snprintf(number, sizeof number, "#0x%lx", m_number);
        out.append(m_msg_file.c_str());
        out.append(number);
    }
    out.append(suffix);
    return out;
}

// ---- RVKMessageString -------------------------------------------------------

RVKMessageString::RVKMessageString(I18NString const& text) : m_text(text)
{
}

RVKMessageString::~RVKMessageString() = default;

RVKMessageString* RVKMessageString::clone() const
{
    return RVK_GUARDED_NEW(new RVKMessageString(*this));
}

char const* RVKMessageString::getClassName() const
{
    return "RVKMessageString";
}

I18NString& RVKMessageString::format(char const* prefix, char const* suffix, I18NString& out) const
{
    out.append(prefix);
    out.append(m_text.c_str(), static_cast<std::size_t>(m_text.length()));
    out.append(suffix);
    return out;
}

// ---- RVKMessageSet ----------------------------------------------------------

RVKMessageSet::RVKMessageSet() = default;

RVKMessageSet::RVKMessageSet(RVKMessageSet const& other)
{
    m_messages.reserve(other.m_messages.size());
    for (auto const& message : other.m_messages) {
        m_messages.emplace_back(message->clone());
    }
}

RVKMessageSet& RVKMessageSet::operator=(RVKMessageSet const& other)
{
    if (this != &other) {
        RVKMessageSet copy(other);
        m_messages.swap(copy.m_messages);
    }
    return *this;
}

RVKMessageSet::~RVKMessageSet() = default;

void RVKMessageSet::addMessage(RVKMessageBase const& message)
{
    std::unique_ptr<RVKMessageBase> copy(message.clone());
    m_messages.push_back(std::move(copy));
}

RVKMessageBase const& RVKMessageSet::getMessageAt(std::size_t i) const
{
    if (i >= m_messages.size()) {
        RVK_THROW(RVKIllegalArgumentError(0, nullptr), "RVKMessageSet::getMessageAt");
    }
    return *m_messages[i];
}
