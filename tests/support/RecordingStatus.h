// RecordingStatus.h - a status handler for tests that keeps every call it is given as one
// text ("text:A", "set:40", "step", "init:T/2/0/100", "uninit") and answers as scripted.
#pragma once

#include "fileio/handlers/StatusHandler.h"
#include "fileio/handlers/StatusMessage.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace fileio::test {

class RecordingStatus : public StatusHandler {
public:
    /// A text that is not the current one when the handler is told it is kept with the
    /// current one ("text:A current:B"): a handler may read the current text as it is told.
    void SetStatusText(const String& text) override {
        const String current = StatusMessage::GetStatusMessage();
        calls.push_back("text:" + std::string(text.View()));
        if (current.View() != text.View())
            calls.back() += " current:" + std::string(current.View());
    }
    void StepProgress() override { calls.emplace_back("step"); }
    void SetProgress(int position) override { calls.push_back("set:" + std::to_string(position)); }
    bool InitializeProgressControl(const char* text, unsigned char kind, int low,
                                   int high) override {
        calls.push_back("init:" + std::string(text) + "/" + std::to_string(kind) + "/" +
                        std::to_string(low) + "/" + std::to_string(high));
        active = initAnswer;
        return initAnswer;
    }
    void UninitializeProgressControl() override {
        calls.emplace_back("uninit");
        active = false;
    }
    bool IsProgressControlActive() const override { return active; }
    unsigned char GetCurrentType() override { return type; }

    /// The arguments of the calls of one kind, in order: Of("set") gives "40" for "set:40".
    [[nodiscard]] std::vector<std::string> Of(std::string_view kind) const {
        std::vector<std::string> found;
        for (const std::string& call : calls)
            if (call.starts_with(kind) && (call.size() == kind.size() || call[kind.size()] == ':'))
                found.push_back(call.substr(std::min(call.size(), kind.size() + 1)));
        return found;
    }
    /// The positions the progress was set to, in order.
    [[nodiscard]] std::vector<int> Positions() const {
        std::vector<int> positions;
        for (const std::string& position : Of("set"))
            positions.push_back(std::stoi(position));
        return positions;
    }

    std::vector<std::string> calls;
    bool initAnswer = true; // what starting a progress control answers
    bool active = false;    // a progress control is running
    unsigned char type = 0; // the running control's kind
};

} // namespace fileio::test
