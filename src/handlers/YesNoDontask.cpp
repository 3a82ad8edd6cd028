// YesNoDontask.cpp - the yes/no question the user can tell not to ask again.

#include "fileio/handlers/YesNoDontask.h"

#include "core/CText.h"
#include "fileio/handlers/ResourceStrings.h"
#include "fileio/settings/RegistrySettings.h"
#include "handlers/ResourceIds.h"
#include "platform/Platform.h"

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
    using namespace fileio::detail::resource;
    using fileio::detail::TextOf;
    const String askName = Suffixed(key, "Ask");
    const String answerName = Suffixed(key, "Answer");

    if (GetRegistryBOOL(section, askName, 1) == 0)
        return GetRegistryBOOL(section, answerName, 1) == 1 ? Yes : No;

    const String affirmative = GetResourceString(kYesButton);
    const String negative = GetResourceString(okOnly ? kOkButton : kNoButton);
    const String checkBox = GetResourceString(okOnly ? kDontShowAgain : kDontAskAgain);
    const fileio::platform::DontAskTexts texts{TextOf(caption), TextOf(text),
                                               okOnly ? nullptr : TextOf(affirmative),
                                               TextOf(negative), TextOf(checkBox)};
    bool dontAskAgain = false;
    const Answer answer = fileio::platform::Dialogs().askDontAsk(texts, dontAskAgain) ? Yes : No;

    if (dontAskAgain) {
        SetRegistryBOOL(section, askName, 0);
        const int replayed = remember == AnswerGiven ? answer : (remember == Yes ? 1 : 0);
        SetRegistryBOOL(section, answerName, replayed);
    }
    return answer;
}
