// DialogProvider.cpp - the platform's own dialogs as the provider's defaults, and the slot.

#include "fileio/handlers/DialogProvider.h"

#include "core/CText.h"
#include "fileio/handlers/ResourceStrings.h"
#include "handlers/ResourceIds.h"
#include "platform/Platform.h"

namespace {

using fileio::detail::TextOf;
namespace platform = fileio::platform;

DialogProvider* g_installed = nullptr;

/// The provider that shows the platform's dialogs: the base class's own operations.
DialogProvider& PlatformDialogs() {
    static DialogProvider platformDialogs;
    return platformDialogs;
}

} // namespace

DialogProvider::~DialogProvider() = default;

int DialogProvider::ShowMessageBox(const String& text, unsigned int style) {
    return platform::Dialogs().messageBox(TextOf(text), style);
}

void DialogProvider::WarningSound(unsigned int sound) {
    platform::System().warningSound(sound);
}

bool DialogProvider::AskYesNoDontask(const String& caption, const String& text, bool okOnly,
                                     bool& dontAskAgain) {
    using namespace fileio::detail::resource;
    const String affirmative = GetResourceString(kYesButton);
    const String negative = GetResourceString(okOnly ? kOkButton : kNoButton);
    const String checkBox = GetResourceString(okOnly ? kDontShowAgain : kDontAskAgain);
    const platform::DontAskTexts texts{
        .caption = TextOf(caption),
        .message = TextOf(text),
        .affirmative = okOnly ? nullptr : TextOf(affirmative),
        .negative = TextOf(negative),
        .checkBox = TextOf(checkBox),
    };
    return platform::Dialogs().askDontAsk(texts, dontAskAgain);
}

bool DialogProvider::LocateFile(const String& title, const String& filter, const String& folder,
                                const String& proposedName, bool& cancelAll, String& chosen) {
    const String cancelAllLabel =
        GetResourceString(fileio::detail::resource::kCancelAllMissingFiles);
    const platform::LocateFileTexts texts{
        .title = TextOf(title),
        .filter = TextOf(filter),
        .folder = TextOf(folder),
        .proposedName = TextOf(proposedName),
        .cancelAllLabel = TextOf(cancelAllLabel),
    };
    std::string picked;
    if (!platform::Dialogs().locateFile(texts, cancelAll, picked))
        return false;
    chosen = String(picked);
    return true;
}

DialogProvider* GetDialogProvider() {
    return g_installed != nullptr ? g_installed : &PlatformDialogs();
}

DialogProvider* SetDialogProvider(DialogProvider* provider) {
    DialogProvider* replaced = GetDialogProvider();
    g_installed = provider != &PlatformDialogs() ? provider : nullptr;
    return replaced;
}
