// StatusMessage.cpp - the scoped status line and the progress forwards.
//
// The process-wide state of the status line: `handler` (the installed sink), `count` (live
// messages and display requests), `critical` (the lock of `currentmessage` and of making
// and ending messages), `currentmessage` (the text now on the status line) and
// `should_display` (whether texts reach the handler). The lock is recursive, as a critical
// section is, so that a handler may read GetStatusMessage() or make a message of its own
// while it receives a text. The counters and switches are atomic, so that the calls that
// take no lock cannot tear them.

#include "fileio/handlers/StatusMessage.h"

#include "fileio/handlers/ResourceStrings.h"

#include <atomic>
#include <cstdint>
#include <mutex>

namespace {

std::atomic<StatusHandler*> handler{nullptr};
std::atomic<std::uint32_t> count{0};
std::atomic<bool> should_display{true};

std::recursive_mutex& Critical() {
    static std::recursive_mutex critical;
    return critical;
}

String& CurrentMessage() {
    static String currentmessage;
    return currentmessage;
}

/// Passes `text` to the handler's status-text operation, when there is a handler and
/// texts are displayed.
void Tell(const String& text) {
    StatusHandler* sink = handler.load();
    if (sink != nullptr && should_display.load())
        sink->SetStatusText(text);
}

void CountDownUnlessZero() {
    std::uint32_t live = count.load();
    while (live != 0 && !count.compare_exchange_weak(live, live - 1)) {
    }
}

} // namespace

StatusMessage::StatusMessage(const String& text, bool keep) {
    Start(text, keep);
}

StatusMessage::StatusMessage(unsigned int textId, bool keep) {
    Start(GetResourceString(textId), keep);
}

void StatusMessage::Start(const String& text, bool keep) {
    std::lock_guard<std::recursive_mutex> lock(Critical());
    ++count;
    String& current = CurrentMessage();
    if (keep) {
        current = text;
        m_savedText = current;
    } else {
        m_savedText = current;
        current = text;
    }
    Tell(current);
}

StatusMessage::~StatusMessage() {
    std::lock_guard<std::recursive_mutex> lock(Critical());
    CountDownUnlessZero();
    String& current = CurrentMessage();
    current = m_savedText;
    Tell(current);
    current = String();
}

StatusHandler* StatusMessage::SetHandler(StatusHandler* newHandler) {
    return handler.exchange(newHandler);
}

void StatusMessage::Display() {
    Tell(CurrentMessage());
}

String StatusMessage::GetStatusMessage() {
    std::lock_guard<std::recursive_mutex> lock(Critical());
    return CurrentMessage();
}

void StatusMessage::SetVisible(bool visible) {
    should_display.store(visible);
}

void StatusMessage::SetDisplaying(bool displaying) {
    if (displaying)
        ++count;
    else
        CountDownUnlessZero();
}

bool StatusMessage::IsDisplaying() {
    return count.load() != 0;
}

bool StatusMessage::InitializeProgressControl(const char* text, unsigned char type, int low,
                                              int high) {
    StatusHandler* sink = handler.load();
    if (sink == nullptr)
        return false;
    CurrentMessage() = String(text);
    return sink->InitializeProgressControl(text, type, low, high);
}

void StatusMessage::SetProgress(int position) {
    if (StatusHandler* sink = handler.load())
        sink->SetProgress(position);
}

void StatusMessage::StepProgress() {
    if (StatusHandler* sink = handler.load())
        sink->StepProgress();
}

void StatusMessage::UninitializeProgressControl() {
    if (StatusHandler* sink = handler.load())
        sink->UninitializeProgressControl();
}

bool StatusMessage::IsProgressControlActive() {
    StatusHandler* sink = handler.load();
    return sink != nullptr && sink->IsProgressControlActive();
}

unsigned char StatusMessage::GetCurrentType() {
    StatusHandler* sink = handler.load();
    return sink != nullptr ? sink->GetCurrentType() : 0;
}
