#ifndef ZUM_MESSAGE_H
#define ZUM_MESSAGE_H

#include "RVKMessage.h"
#include "ZUMExport.h"

// A numbered message of the stream library's catalog "rvkzummsgs".
class ZUM_API ZUMMessage : public RVKMessage {
public:
    // The message `number` of the catalog "rvkzummsgs".
    explicit ZUMMessage(unsigned long number);
    ~ZUMMessage() override;
};

#endif
