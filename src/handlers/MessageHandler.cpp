// MessageHandler.cpp - the message handler's default and its slot.

#include "fileio/handlers/MessageHandler.h"

namespace {
MessageHandler* g_messageHandler = nullptr;
} // namespace

MessageHandler::~MessageHandler() = default;
void MessageHandler::MessageRequest(const String&, const String&) {}

MessageHandler* GetMessageHandler() {
    return g_messageHandler;
}

MessageHandler* SetMessageHandler(MessageHandler* handler) {
    MessageHandler* previous = g_messageHandler;
    g_messageHandler = handler;
    return previous;
}
