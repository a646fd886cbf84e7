#include "ZUMMessage.h"

ZUMMessage::ZUMMessage(unsigned long number)
    : RVKMessage(I18NString("rvkzummsgs", nullptr, -1, nullptr, nullptr), number)
{
}

ZUMMessage::~ZUMMessage() = default;
