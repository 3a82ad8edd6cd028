// ScriptedDialogProvider.h - the dialogs for tests: every call the library makes is
// recorded with its exact arguments and answered from a script. Nobody is ever asked.
//
// For its lifetime the object scripts two layers:
//   - the dialog provider: it installs itself with SetDialogProvider (and puts the provider
//     it replaced back when it goes), recording "sound", "box", "dontask" and "locate";
//   - the platform's dialogs beneath the default provider, recording "platform-sound",
//     "platform-box", "platform-dontask" and "platform-locate" with the texts the default
//     provider gave them, and the platform's "alert" step before a box.
// With Layer::PlatformOnly it does not install itself, so that the default provider's
// translation onto the platform is seen; otherwise any "platform-" call is a dialog that
// bypassed the provider.
#pragma once

#include "fileio/handlers/DialogProvider.h"
#include "platform/Platform.h"

#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace fileio::test {

class ScriptedDialogProvider : public DialogProvider {
public:
    enum class Layer { ProviderAndPlatform, PlatformOnly };

    /// One call, in the order the library made them.
    struct Call {
        std::string kind;
        unsigned int value = 0; // sound: its kind; box: its style
        std::string text;       // box and question: the text; locate: the title
        std::string caption;    // question
        std::string affirmative, negative, checkBox; // platform question: its labels
        std::string filter, folder, proposedName;    // locate
        std::string cancelAllLabel;                  // platform locate: the check box's label
        bool cancelAll = false;                      // locate: the check box as it came in
    };

    /// How one locate-file dialog is answered.
    struct Located {
        enum class Kind { Chosen, Cancel, CancelAll };
        Kind kind = Kind::Cancel;
        std::string path; // Chosen: the file picked
    };
    static Located Choose(std::string path) { return {Located::Kind::Chosen, std::move(path)}; }
    static Located Cancel() { return {Located::Kind::Cancel, {}}; }
    /// Ticks the cancel-all check box, then cancels.
    static Located CancelAll() { return {Located::Kind::CancelAll, {}}; }

    explicit ScriptedDialogProvider(Layer layer = Layer::ProviderAndPlatform)
        : m_platformDialogs(platform::Dialogs()), m_platformSystem(platform::System()),
          m_outer(std::exchange(Current(), this)) {
        ScriptPlatform();
        if (layer == Layer::ProviderAndPlatform)
            m_replaced = SetDialogProvider(this);
    }
    ~ScriptedDialogProvider() override {
        if (m_replaced != nullptr)
            SetDialogProvider(m_replaced);
        Current() = m_outer;
    }
    ScriptedDialogProvider(const ScriptedDialogProvider&) = delete;
    ScriptedDialogProvider& operator=(const ScriptedDialogProvider&) = delete;

    /// The calls of one kind.
    [[nodiscard]] std::vector<Call> Of(const std::string& kind) const {
        std::vector<Call> found;
        for (const Call& call : calls)
            if (call.kind == kind)
                found.push_back(call);
        return found;
    }
    /// The kinds of all calls, in order.
    [[nodiscard]] std::vector<std::string> Kinds() const {
        std::vector<std::string> kinds;
        for (const Call& call : calls)
            kinds.push_back(call.kind);
        return kinds;
    }

    int ShowMessageBox(const String& text, unsigned int style) override {
        Call& call = Record("box");
        call.value = style;
        call.text = Text(text);
        return boxAnswer;
    }
    void WarningSound(unsigned int sound) override { Record("sound").value = sound; }
    bool AskYesNoDontask(const String& caption, const String& text, bool,
                         bool& dontAskAgain) override {
        Call& call = Record("dontask");
        call.text = Text(text);
        call.caption = Text(caption);
        dontAskAgain = tickDontAsk;
        return answerYes;
    }
    bool LocateFile(const String& title, const String& filter, const String& folder,
                    const String& proposedName, bool& cancelAll, String& chosen) override {
        Call& call = Record("locate");
        call.text = Text(title);
        call.filter = Text(filter);
        call.folder = Text(folder);
        call.proposedName = Text(proposedName);
        call.cancelAll = cancelAll;
        std::string picked;
        if (!AnswerLocate(cancelAll, picked))
            return false;
        chosen = String(picked);
        return true;
    }

    // ---- the script
    int boxAnswer = platform::box::kAnswerOk; // the button every box returns
    bool answerYes = false;                   // the don't-ask question's answer
    bool tickDontAsk = false;                 // and its check box
    std::deque<Located> locateAnswers;        // one per dialog, from the front; then Cancel

    std::vector<Call> calls;

private:
    static ScriptedDialogProvider*& Current() {
        static ScriptedDialogProvider* current = nullptr;
        return current;
    }
    static std::string Text(const String& s) { return std::string(s.View()); }
    /// Appends a call of `kind` for its arguments to be filled in.
    Call& Record(const char* kind) {
        calls.emplace_back();
        calls.back().kind = kind;
        return calls.back();
    }
    static std::string Text(const char* s) { return s != nullptr ? s : "<null>"; }

    bool AnswerLocate(bool& cancelAll, std::string& chosen) {
        Located answer;
        if (!locateAnswers.empty()) {
            answer = locateAnswers.front();
            locateAnswers.pop_front();
        }
        if (answer.kind == Located::Kind::CancelAll)
            cancelAll = true;
        if (answer.kind != Located::Kind::Chosen)
            return false;
        chosen = answer.path;
        return true;
    }

    void ScriptPlatform() {
        platform::Dialogs().messageBox = [](const char* text, unsigned int style) {
            Call& call = Current()->Record("platform-box");
            call.value = style;
            call.text = Text(text);
            return Current()->boxAnswer;
        };
        platform::Dialogs().askDontAsk = [](const platform::DontAskTexts& texts, bool& tick) {
            ScriptedDialogProvider& self = *Current();
            Call& call = self.Record("platform-dontask");
            call.text = Text(texts.message);
            call.caption = Text(texts.caption);
            call.affirmative = Text(texts.affirmative);
            call.negative = Text(texts.negative);
            call.checkBox = Text(texts.checkBox);
            tick = self.tickDontAsk;
            return self.answerYes;
        };
        platform::Dialogs().alertMainWindow = [] { Current()->Record("alert"); };
        platform::Dialogs().locateFile = [](const platform::LocateFileTexts& texts, bool& cancelAll,
                                            std::string& chosen) {
            ScriptedDialogProvider& self = *Current();
            Call& call = self.Record("platform-locate");
            call.text = Text(texts.title);
            call.filter = Text(texts.filter);
            call.folder = Text(texts.folder);
            call.proposedName = Text(texts.proposedName);
            call.cancelAllLabel = Text(texts.cancelAllLabel);
            call.cancelAll = cancelAll;
            return self.AnswerLocate(cancelAll, chosen);
        };
        platform::System().warningSound = [](unsigned int kind) {
            Current()->Record("platform-sound").value = kind;
        };
    }

    platform::ScopedServices<platform::DialogServices> m_platformDialogs;
    platform::ScopedServices<platform::SystemServices> m_platformSystem;
    ScriptedDialogProvider* m_outer;
    DialogProvider* m_replaced = nullptr;
};

} // namespace fileio::test
