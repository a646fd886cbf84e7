#include <gtest/gtest.h>

#include "TestStreams.h"

namespace {

I18NString i18n(char const* text)
{
    return I18NString(text, nullptr, -1, nullptr, nullptr);
}

std::string messageText(RVKMessageBase const& m)
{
    I18NString out;
    m.format("", "", out);
    return out.c_str();
}

}  // namespace

// The named numbers are the catalog's, and the catalog has a text for each;
// hasMessage() finds a number of the library's catalog among an exception's
// messages, whatever its place, and only of that catalog.
TEST(RVKMessage, CatalogKnowsTheLibraryNumbersAndHasMessageFindsThem)
{
    std::pair<unsigned long, unsigned long> const numbers[] = {
        {ZUMMessage::TEXT_ERROR, 0x91fdd700UL},        {ZUMMessage::FILE_OPEN_FAILED, 0x91f2b0d2UL},
        {ZUMMessage::FILE_READ_FAILED, 0x91fe8ba5UL},  {ZUMMessage::GZIP_TRUNCATED, 0x91f36c62UL},
        {ZUMMessage::GZIP_NOT_GZIP, 0xc1c209cfUL},     {ZUMMessage::GZIP_UNSUPPORTED, 0xc1c58e80UL},
        {ZUMMessage::GZIP_CORRUPT, 0x91f342d7UL},      {ZUMMessage::GZIP_CRC_MISMATCH, 0xc1c34d1fUL},
        {ZUMMessage::GZIP_LENGTH_MISMATCH, 0xc1c66a72UL}, {ZUMMessage::GZIP_TRAILING_GARBAGE, 0xc1c7a3e1UL},
        {ZUMMessage::CHUNKED_MALFORMED, 0xc1c81b44UL},    {ZUMMessage::CHUNKED_TRUNCATED, 0x91f4d2a6UL},
        {ZUMMessage::BASE64_MALFORMED, 0xc1c9e857UL},     {ZUMMessage::BASE64_TRUNCATED, 0x91f5a0b9UL},
    };
    for (auto const& [named, number] : numbers) {
        EXPECT_EQ(named, number);
        std::string text = messageText(RVKMessage(i18n("rvkzummsgs"), number));
        EXPECT_TRUE(!text.empty() && text.find("rvkzummsgs#") == std::string::npos) << std::hex << number;
    }
    EXPECT_EQ(messageText(RVKMessage(i18n("rvkzummsgs"), 0x1234UL)), "rvkzummsgs#0x1234");
    EXPECT_EQ(messageText(RVKMessage(i18n("othermsgs"), 0x91fdd700UL)), "othermsgs#0x91fdd700");
    ZUMIOTimeoutException e(4L);
    e << RVKMessageString(i18n("first")) << ZUMMessage(ZUMMessage::FILE_READ_FAILED)
      << RVKMessage(i18n("othermsgs"), ZUMMessage::GZIP_CORRUPT);
    ZUMIOException const& base = e;
    EXPECT_TRUE(base.hasMessage(ZUMMessage::FILE_READ_FAILED));
    EXPECT_FALSE(base.hasMessage(ZUMMessage::GZIP_CORRUPT));
    EXPECT_FALSE(ZUMIOException(3L).hasMessage(ZUMMessage::TEXT_ERROR));
}
