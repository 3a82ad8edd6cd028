// Dialogs.cpp - modal questions, Win32 implementation: the system's message box, the
// system's open-file dialog (IFileOpenDialog, with the cancel-all check box added through
// IFileDialogCustomize), and the don't-ask question as a dialog whose template is built in
// memory (the library carries no resource script). That dialog has the message (control
// 2289), the affirmative and negative buttons (IDYES, IDNO) and the check box (control
// 10320); it grows when the message needs more lines than its control shows.

#include "platform/Platform.h"
#include "platform/win32/WideText.h"

#include <string>
#include <vector>
#include <windows.h>

#include <shobjidl.h>

namespace fileio::platform {

namespace {

constexpr WORD kMessageControl = 2289;
constexpr WORD kCheckBoxControl = 10320;
constexpr WORD kButtonClass = 0x0080;
constexpr WORD kStaticClass = 0x0082;

/// Builds a DLGTEMPLATE with its items in WORD-aligned memory.
class DialogTemplate {
public:
    DialogTemplate(short width, short height, WORD items) {
        PutLong(DS_MODALFRAME | DS_SETFONT | DS_CENTER | WS_POPUP | WS_CAPTION | WS_SYSMENU);
        PutLong(0);
        m_words.push_back(items);
        PutRect(0, 0, width, height);
        m_words.push_back(0); // no menu
        m_words.push_back(0); // the standard dialog class
        m_words.push_back(0); // the title is set when the dialog starts
        m_words.push_back(8);
        PutText(L"MS Shell Dlg");
    }

    void AddItem(DWORD style, short x, short y, short width, short height, WORD id, WORD type) {
        if (m_words.size() % 2 != 0)
            m_words.push_back(0); // items start on a DWORD boundary
        PutLong(style | WS_CHILD | WS_VISIBLE);
        PutLong(0);
        PutRect(x, y, width, height);
        m_words.push_back(id);
        m_words.push_back(0xFFFF);
        m_words.push_back(type);
        m_words.push_back(0); // the text is set when the dialog starts
        m_words.push_back(0); // no creation data
    }

    LPCDLGTEMPLATEA Get() const { return reinterpret_cast<LPCDLGTEMPLATEA>(m_words.data()); }

private:
    void PutLong(DWORD value) {
        m_words.push_back(LOWORD(value));
        m_words.push_back(HIWORD(value));
    }
    void PutRect(short x, short y, short width, short height) {
        for (short v : {x, y, width, height})
            m_words.push_back(static_cast<WORD>(v));
    }
    void PutText(const wchar_t* text) {
        do
            m_words.push_back(static_cast<WORD>(*text));
        while (*text++ != L'\0');
    }

    std::vector<WORD> m_words;
};

struct DontAskState {
    const DontAskTexts* texts;
    bool checked;
};

/// Moves a control down by `dy` pixels.
void MoveDown(HWND dialog, int id, int dy) {
    HWND control = GetDlgItem(dialog, id);
    RECT r;
    GetWindowRect(control, &r);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&r), 2);
    SetWindowPos(control, nullptr, r.left, r.top + dy, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
}

/// Grows the message control, and the dialog with it, when the message needs more height.
void FitMessage(HWND dialog, const char* message) {
    HWND control = GetDlgItem(dialog, kMessageControl);
    RECT shown;
    GetClientRect(control, &shown);
    RECT needed{0, 0, shown.right, 0};
    HDC dc = GetDC(control);
    HGDIOBJ old =
        SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageA(control, WM_GETFONT, 0, 0)));
    DrawTextA(dc, message, -1, &needed, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    SelectObject(dc, old);
    ReleaseDC(control, dc);
    const int dy = needed.bottom - shown.bottom;
    if (dy <= 0)
        return;
    SetWindowPos(control, nullptr, 0, 0, shown.right, needed.bottom, SWP_NOMOVE | SWP_NOZORDER);
    for (int id : {static_cast<int>(kCheckBoxControl), IDYES, IDNO})
        MoveDown(dialog, id, dy);
    RECT frame;
    GetWindowRect(dialog, &frame);
    SetWindowPos(dialog, nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top + dy,
                 SWP_NOMOVE | SWP_NOZORDER);
}

INT_PTR CALLBACK DontAskProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG: {
        SetWindowLongPtrA(dialog, DWLP_USER, lParam);
        const DontAskTexts& texts = *reinterpret_cast<DontAskState*>(lParam)->texts;
        const char* text = texts.message != nullptr ? texts.message : "";
        SetWindowTextA(dialog, texts.caption != nullptr ? texts.caption : "");
        SetDlgItemTextA(dialog, kMessageControl, text);
        SetDlgItemTextA(dialog, IDNO, texts.negative);
        SetDlgItemTextA(dialog, kCheckBoxControl, texts.checkBox);
        if (texts.affirmative != nullptr) {
            SetDlgItemTextA(dialog, IDYES, texts.affirmative);
        } else {
            ShowWindow(GetDlgItem(dialog, IDYES), SW_HIDE);
            SendMessageA(dialog, DM_SETDEFID, IDNO, 0);
        }
        FitMessage(dialog, text);
        return TRUE;
    }
    case WM_COMMAND: {
        const int id = LOWORD(wParam);
        if (id != IDYES && id != IDNO && id != IDCANCEL)
            break;
        auto* state = reinterpret_cast<DontAskState*>(GetWindowLongPtrA(dialog, DWLP_USER));
        state->checked = IsDlgButtonChecked(dialog, kCheckBoxControl) == BST_CHECKED;
        EndDialog(dialog, id);
        return TRUE;
    }
    default:
        break;
    }
    return FALSE;
}

int ShowMessageBox(const char* text, unsigned int style) {
    const std::string caption = System().applicationName();
    return MessageBoxA(GetActiveWindow(), text, caption.c_str(), style);
}

bool AskDontAsk(const DontAskTexts& texts, bool& dontAskAgain) {
    DialogTemplate layout(240, 80, 4);
    layout.AddItem(SS_LEFT | SS_NOPREFIX, 7, 7, 226, 32, kMessageControl, kStaticClass);
    layout.AddItem(BS_AUTOCHECKBOX | WS_TABSTOP, 7, 44, 226, 10, kCheckBoxControl, kButtonClass);
    layout.AddItem(BS_DEFPUSHBUTTON | WS_TABSTOP, 127, 59, 50, 14, IDYES, kButtonClass);
    layout.AddItem(BS_PUSHBUTTON | WS_TABSTOP, 183, 59, 50, 14, IDNO, kButtonClass);
    DontAskState state{&texts, false};
    const INT_PTR pressed =
        DialogBoxIndirectParamA(GetModuleHandleA(nullptr), layout.Get(), GetActiveWindow(),
                                DontAskProc, reinterpret_cast<LPARAM>(&state));
    dontAskAgain = pressed > 0 && state.checked;
    return pressed == IDYES;
}

/// The id of the cancel-all check box among the open-file dialog's added controls.
constexpr DWORD kCancelAllCheckBox = 1;

/// Holds one reference to a COM object and releases it when it goes.
template <class Interface> class ComReference {
public:
    ComReference() = default;
    ~ComReference() {
        if (m_object != nullptr)
            m_object->Release();
    }
    ComReference(const ComReference&) = delete;
    ComReference& operator=(const ComReference&) = delete;

    Interface* operator->() const { return m_object; }
    Interface* Get() const { return m_object; }
    /// Where a call that hands out a reference puts it.
    Interface** Out() { return &m_object; }
    void** OutVoid() { return reinterpret_cast<void**>(&m_object); }

private:
    Interface* m_object = nullptr;
};

/// A single-threaded COM apartment on this thread for the life of the object, unless the
/// thread is already in one (then that one is used as it is).
class ComApartment {
public:
    ComApartment()
        : m_entered(SUCCEEDED(
              CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE))) {}
    ~ComApartment() {
        if (m_entered)
            CoUninitialize();
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    bool m_entered;
};

/// The file name of a path, without its folder.
std::string_view NameOnly(std::string_view path) {
    const std::size_t separator = path.find_last_of("\\/");
    return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

/// Offers the file types of the library's filter form.
void SetFileTypes(IFileOpenDialog& dialog, const char* filter) {
    const std::vector<FileFilter> types = ParseFileFilter(filter);
    std::vector<std::wstring> texts;
    texts.reserve(types.size() * 2); // the specs point into these strings
    std::vector<COMDLG_FILTERSPEC> specs;
    for (const FileFilter& type : types) {
        texts.push_back(win32::Widen(type.text));
        texts.push_back(win32::Widen(type.pattern));
        specs.push_back({texts[texts.size() - 2].c_str(), texts.back().c_str()});
    }
    if (!specs.empty())
        dialog.SetFileTypes(static_cast<UINT>(specs.size()), specs.data());
}

/// Starts the dialog in `folder` when the system can find it.
void SetStartFolder(IFileOpenDialog& dialog, const char* folder) {
    if (folder[0] == '\0')
        return;
    ComReference<IShellItem> start;
    if (SUCCEEDED(SHCreateItemFromParsingName(win32::Widen(folder).c_str(), nullptr, IID_IShellItem,
                                              start.OutVoid())))
        dialog.SetFolder(start.Get());
}

bool LocateFile(const LocateFileTexts& texts, bool& cancelAll, std::string& chosen) {
    const ComApartment apartment;
    ComReference<IFileOpenDialog> dialog;
    if (FAILED(CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER,
                                IID_IFileOpenDialog, dialog.OutVoid())))
        return false;
    FILEOPENDIALOGOPTIONS options = 0;
    dialog->GetOptions(&options);
    dialog->SetOptions(options | FOS_FORCEFILESYSTEM | FOS_PATHMUSTEXIST | FOS_FILEMUSTEXIST |
                       FOS_NOCHANGEDIR);
    dialog->SetTitle(win32::Widen(texts.title).c_str());
    SetFileTypes(*dialog.Get(), texts.filter);
    SetStartFolder(*dialog.Get(), texts.folder);
    dialog->SetFileName(win32::Widen(NameOnly(texts.proposedName)).c_str());

    ComReference<IFileDialogCustomize> customize;
    const bool hasCheckBox =
        SUCCEEDED(dialog->QueryInterface(IID_IFileDialogCustomize, customize.OutVoid())) &&
        SUCCEEDED(customize->AddCheckButton(kCancelAllCheckBox,
                                            win32::Widen(texts.cancelAllLabel).c_str(),
                                            cancelAll ? TRUE : FALSE));
    const HRESULT shown = dialog->Show(GetActiveWindow());
    BOOL checked = FALSE;
    if (hasCheckBox && SUCCEEDED(customize->GetCheckButtonState(kCancelAllCheckBox, &checked)))
        cancelAll = checked != FALSE;
    if (FAILED(shown))
        return false;

    ComReference<IShellItem> picked;
    PWSTR path = nullptr;
    if (FAILED(dialog->GetResult(picked.Out())) ||
        FAILED(picked->GetDisplayName(SIGDN_FILESYSPATH, &path)))
        return false;
    chosen = win32::Narrow(path);
    CoTaskMemFree(path);
    return true;
}

void AlertMainWindow() {
    HWND window = GetActiveWindow();
    if (window != nullptr)
        PostMessageA(window, WM_SYSKEYDOWN, 0, 0);
}

} // namespace

DialogServices& Dialogs() {
    static DialogServices table{
        .messageBox = ShowMessageBox,
        .askDontAsk = AskDontAsk,
        .alertMainWindow = AlertMainWindow,
        .locateFile = LocateFile,
    };
    return table;
}

} // namespace fileio::platform
