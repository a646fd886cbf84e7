#include "messages.h"

#include <cstdio>

#include "RVKCore.h"
#include "ZUMStreams.h"

namespace zumcat {

std::string catalogText(unsigned long number)
{
    char const* text = RVKMessageCatalogText("rvkzummsgs", number);
    if (text) {
        return text;
    }
    char hex[64];
    std::snprintf(hex, sizeof hex, "failure 0x%08lx of the stream library", number);
    return hex;
}

namespace {

// The texts of an exception's messages, joined by ": ". A text error names
// its text only: the catalog's "reported as text" adds nothing for a person.
std::string messageTexts(RVKException const& exception)
{
    std::string line;
    for (std::size_t i = 0; i < exception.getMessageCount(); ++i) {
        RVKMessageBase const& message = exception.getMessageAt(i);
        std::string text;
        if (auto const* numbered = dynamic_cast<RVKMessage const*>(&message)) {
            if (numbered->getMsgNumber() == ZUMMessage::TEXT_ERROR) {
                continue;
            }
            text = catalogText(numbered->getMsgNumber());
        } else {
            I18NString formatted;
            message.format("", "", formatted);
            text = formatted.c_str();
        }
        if (!text.empty()) {
            line += (line.empty() ? "" : ": ") + text;
        }
    }
    return line;
}

}  // namespace

std::string describe(RVKThrowable const& thrown)
{
    if (auto const* exception = dynamic_cast<RVKException const*>(&thrown)) {
        std::string line = messageTexts(*exception);
        if (line.empty() && exception->getText()) {
            line = exception->getText();
        }
        if (!line.empty()) {
            return line;
        }
        return "an I/O error occurred";
    }
    if (dynamic_cast<RVKOutOfMemoryError const*>(&thrown)) {
        return "out of memory";
    }
    if (dynamic_cast<RVKUnexpectedError const*>(&thrown)) {
        return "the compressed data cannot be decoded (zlib status " + std::to_string(thrown.getCode()) + ")";
    }
    // Assertions and misuse errors are faults of this program, not of the
    // input: say so without the internals.
    return "internal error: zumcat misused the stream library; please report it with the input";
}

std::string byteText(unsigned char byte)
{
    char text[8];
    if (byte >= 0x20 && byte < 0x7f) {
        std::snprintf(text, sizeof text, "'%c'", byte);
    } else {
        std::snprintf(text, sizeof text, "0x%02x", byte);
    }
    return text;
}

void report(std::string const& op, std::string const& text)
{
    std::fprintf(stderr, "zumcat: %s%s%s\n", op.c_str(), op.empty() ? "" : ": ", text.c_str());
}

}  // namespace zumcat
