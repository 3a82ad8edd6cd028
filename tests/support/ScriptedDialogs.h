// ScriptedDialogs.h - a dialog provider for tests: it records every box and question, with
// the warning sounds played, and answers from a script. Nobody is ever asked.
#pragma once

#include "platform/Platform.h"

#include <string>
#include <vector>

namespace fileio::test {

class ScriptedDialogs {
public:
    /// What the library showed or played, in order.
    struct Event {
        std::string kind;       // "sound", "alert", "box" or "dontask"
        unsigned int value = 0; // the sound's kind or the box's style
        std::string text;
        // The don't-ask question's texts (affirmative "<hidden>" when null).
        std::string caption, affirmative, negative, checkBox;
    };

    ScriptedDialogs() : m_dialogs(platform::Dialogs()), m_system(platform::System()) {
        Current() = this;
        platform::Dialogs().messageBox = [](const char* text, unsigned int style) {
            Current()->events.push_back({"box", style, text, {}, {}, {}, {}});
            return Current()->boxAnswer;
        };
        platform::Dialogs().askDontAsk = [](const platform::DontAskTexts& texts, bool& tick) {
            ScriptedDialogs& self = *Current();
            self.events.push_back({"dontask", 0, texts.message, texts.caption,
                                   texts.affirmative != nullptr ? texts.affirmative : "<hidden>",
                                   texts.negative, texts.checkBox});
            tick = self.tickDontAsk;
            return self.answerYes;
        };
        platform::Dialogs().alertMainWindow = [] {
            Current()->events.push_back({"alert", 0, {}, {}, {}, {}, {}});
        };
        platform::System().warningSound = [](unsigned int kind) {
            Current()->events.push_back({"sound", kind, {}, {}, {}, {}, {}});
        };
    }
    ~ScriptedDialogs() { Current() = nullptr; }
    ScriptedDialogs(const ScriptedDialogs&) = delete;
    ScriptedDialogs& operator=(const ScriptedDialogs&) = delete;

    /// The events of one kind.
    std::vector<Event> Of(const std::string& kind) const {
        std::vector<Event> found;
        for (const Event& e : events)
            if (e.kind == kind)
                found.push_back(e);
        return found;
    }

    std::vector<Event> events;
    int boxAnswer = platform::box::kAnswerOk; // the button every box returns
    bool answerYes = false;                   // the don't-ask question's answer
    bool tickDontAsk = false;                 // and its check box

private:
    static ScriptedDialogs*& Current() {
        static ScriptedDialogs* current = nullptr;
        return current;
    }

    platform::ScopedServices<platform::DialogServices> m_dialogs;
    platform::ScopedServices<platform::SystemServices> m_system;
};

} // namespace fileio::test
