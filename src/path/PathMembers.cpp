// PathMembers.cpp - the path members of String: decomposition, joining, the program's
// folder, and the forms of a path (relative, absolute, network, quoted).

#include "fileio/core/String.h"

#include "path/MissingFiles.h"
#include "path/PathForms.h"

namespace {

using fileio::platform::kNativePathStyle;
namespace detail = fileio::detail;

String FromView(std::string_view text) {
    return text.empty() ? String() : String(text.data(), static_cast<int>(text.size()));
}

} // namespace

String String::GetPathOnly() const {
    return FromView(detail::PathOnly(View()));
}

String String::GetNameOnly() const {
    return FromView(detail::NameOnly(View()));
}

String String::GetNameOnlyWithoutSuffix() const {
    return FromView(detail::NameOnlyWithoutSuffix(View()));
}

String String::GetSuffixOnly() const {
    return FromView(detail::SuffixOnly(View()));
}

String String::CombineNameToPath(const String& folder, const String& name) {
    return String(detail::CombineNameToPath(folder.View(), name.View(), kNativePathStyle));
}

int String::FindAndRemoveDoubleSeparators() {
    std::string text(View());
    std::size_t removed = detail::RemoveDoubleSeparators(text);
    if (removed > 0)
        *this = String(text);
    return static_cast<int>(removed);
}

String String::Point() {
    return String(".");
}

String String::GetAppPath() {
    return String(fileio::platform::System().applicationFolder());
}

String String::AddNameToExeDirectory(const String& name) {
    return CombineNameToPath(GetAppPath(), name);
}

String String::GetRelativePath() const {
    return String(detail::GetRelativePath(View(), kNativePathStyle));
}

String String::GetAbsolutePath(bool useMatchBase) const {
    return String(detail::GetAbsolutePath(View(), useMatchBase, kNativePathStyle));
}

String String::GetAbsolutePath() const {
    return String(detail::GetAbsolutePathQuiet(View(), kNativePathStyle));
}

String String::GetNonRelativePath() const {
    return String(detail::GetNonRelativePath(View(), kNativePathStyle));
}

String String::GetServerFileName() const {
    return String(detail::GetServerFileName(View(), kNativePathStyle));
}

String String::GetUNCFileName() const {
    return String(detail::GetUNCFileName(View(), kNativePathStyle));
}

String String::NetSharePlaceHolder() const {
    String copy(*this);
    if (GetLength() >= 2 && m_str[1] == ':')
        copy.Get()[1] = '-';
    return copy;
}

String String::GetFileNamesMatchName() const {
    return IsEmpty() ? String() : Quote();
}

String String::GetMatchNameRelativeForFile() const {
    return String(detail::GetMatchNameRelativeForFile(View(), kNativePathStyle));
}

String String::GetMatchNameAbsoluteFromFile() const {
    const std::string quoted = detail::GetMatchNameAbsoluteFromFile(View(), kNativePathStyle);
    if (Find('"') < 0)
        return String(quoted);
    // The missing-file aliases replace the name where they hold one.
    String name(quoted.data() + 1, static_cast<int>(quoted.size()) - 2);
    detail::FindAlias(name);
    return name.Quote();
}
