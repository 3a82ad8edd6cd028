// YesNoDontask.cpp - the yes/no question the user can tell not to ask again.

#include "fileio/handlers/YesNoDontask.h"

#include "fileio/handlers/DialogProvider.h"
#include "fileio/settings/RegistrySettings.h"

namespace {

String Suffixed(const String& key, const char* suffix) {
    String name(key);
    name += String(suffix);
    return name;
}

} // namespace

YesNoDontask::Answer YesNoDontask::Ask(const String& caption, const String& text,
                                       const String& section, const String& key, Answer remember,
                                       bool okOnly) {
    const String askName = Suffixed(key, "Ask");
    const String answerName = Suffixed(key, "Answer");

    if (GetRegistryBOOL(section, askName, 1) == 0)
        return GetRegistryBOOL(section, answerName, 1) == 1 ? Yes : No;

    bool dontAskAgain = false;
    const Answer answer =
        GetDialogProvider()->AskYesNoDontask(caption, text, okOnly, dontAskAgain) ? Yes : No;

    if (dontAskAgain) {
        SetRegistryBOOL(section, askName, 0);
        const int replayed = remember == AnswerGiven ? answer : (remember == Yes ? 1 : 0);
        SetRegistryBOOL(section, answerName, replayed);
    }
    return answer;
}
