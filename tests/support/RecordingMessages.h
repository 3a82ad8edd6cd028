// RecordingMessages.h - a message handler for tests that keeps every message it is given.
#pragma once

#include "fileio/handlers/MessageHandler.h"

#include <string>
#include <vector>

namespace fileio::test {

class RecordingMessages : public MessageHandler {
public:
    struct Message {
        std::string caption;
        std::string text;
    };
    void MessageRequest(const String& caption, const String& text) override {
        messages.push_back({std::string(caption.View()), std::string(text.View())});
    }
    std::vector<Message> messages;
};

} // namespace fileio::test
