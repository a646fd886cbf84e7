#ifndef RVK_MESSAGE_SET_H
#define RVK_MESSAGE_SET_H

#include <cstddef>
#include <memory>
#include <vector>

#include "RVKExport.h"
#include "RVKMessageBase.h"

// An ordered list of messages. Each added message is copied (clone()), so the
// message given may be a temporary; copying the set copies every message.
class RVK_API RVKMessageSet {
public:
    RVKMessageSet();
    // Copies every message (clone()). Raises RVKOutOfMemoryError.
    RVKMessageSet(RVKMessageSet const& other);
    RVKMessageSet& operator=(RVKMessageSet const& other);
    virtual ~RVKMessageSet();

    // Appends a copy of `message`. Raises RVKOutOfMemoryError.
    void addMessage(RVKMessageBase const& message);
    // The number of messages.
    std::size_t getMessageCount() const { return m_messages.size(); }
    // Message i (0 is the first added). Raises RVKIllegalArgumentError when
    // out of range.
    RVKMessageBase const& getMessageAt(std::size_t i) const;

private:
    std::vector<std::unique_ptr<RVKMessageBase>> m_messages;
};

#endif
