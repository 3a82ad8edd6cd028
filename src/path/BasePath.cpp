// BasePath.cpp - the process-wide base path and the relative and absolute forms of paths
// against it.

#include "fileio/path/BasePath.h"

#include "path/PathForms.h"

namespace fileio::detail {

namespace {

using platform::Files;
using platform::System;

/// The base path of the process. Kept in standard strings rather than Strings, so that no
/// pool memory is held by a static object that outlives the pools at exit.
struct BaseState {
    std::string fileName;  // as given to SetBasePath, doubled separators collapsed
    std::string basePath;  // universal folder of fileName, ending in "/"
    std::string matchBase; // the folder the match-name operations and MatchPathDepth use
    int depth = 0;         // PathDepth(basePath); deliberately kept by FreeBasePaths
};

BaseState& State() {
    static BaseState state;
    return state;
}

/// Writes a line of the resolution's failures to the debug trace, in debug builds only.
void Trace(const char* format, const std::string& error) {
#if defined(NDEBUG)
    constexpr bool kTraced = false;
#else
    constexpr bool kTraced = true;
#endif
    if (!kTraced)
        return;
    std::string line = format;
    line.replace(line.find("%s"), 2, error);
    System().debugTrace(line.c_str());
}

/// Leaves the process's current directory at `base` (native form) unless it is there
/// already or the folder does not exist.
void EnterBaseFolder(const std::string& base, bool quiet, PathStyle style) {
    std::string current;
    bool known = Files().getCurrentDirectory(current);
    if (!known && !quiet)
        Trace("RelativeToAbsolute Error: %s\n", System().lastErrorText());
    if (known && current + NativeSeparator(style) == base)
        return;
    if (Files().isFolder(base.c_str()) && !Files().setCurrentDirectory(base.c_str()) && !quiet)
        Trace("RelativeToAbsolute Error: %s\n", System().lastErrorText());
}

/// The text between the first and the last character of a quoted name.
std::string_view Unquoted(std::string_view quoted) {
    return quoted.size() < 2 ? std::string_view() : quoted.substr(1, quoted.size() - 2);
}

} // namespace

std::string AbsoluteToRelative(std::string_view universal, PathStyle style) {
    const BaseState& state = State();
    if (state.basePath.empty())
        return std::string(universal);
    if (EqualNoCase(universal, state.basePath))
        return ".";
    int shared = MatchPathDepth(state.matchBase, universal);
    if (shared < 1)
        return NativeToUniversal(GetUNCFileName(UniversalToNative(universal, style), style));
    std::string out;
    for (int i = shared; i < state.depth; ++i)
        out += "../";
    out += ShortenPath(universal, shared);
    return out;
}

std::string RelativeToAbsolute(std::string_view universal, BaseChoice choice, bool quiet,
                               PathStyle style) {
    std::string path(universal);
    RemoveDoubleSeparators(path);
    const BaseState& state = State();
    const std::string& base = choice == BaseChoice::MatchBase ? state.matchBase : state.basePath;
    if (path.empty() || base.empty())
        return path;
    if (EqualNoCase(path, "."))
        return base;

    std::string nativeBase = base;
    ToNativeSeparators(nativeBase, style);
    EnterBaseFolder(nativeBase, quiet, style);

    std::string full;
    if (!Files().fullPath(path.c_str(), full)) {
        if (!quiet)
            Trace("fs::absolute error: %s\n", System().lastErrorText());
        return path;
    }
    return full;
}

std::string GetRelativePath(std::string_view path, PathStyle style) {
    if (path.empty())
        return {};
    return AbsoluteToRelative(NativeToUniversal(path), style);
}

std::string GetAbsolutePath(std::string_view path, bool useMatchBase, PathStyle style) {
    BaseChoice choice = useMatchBase ? BaseChoice::MatchBase : BaseChoice::Base;
    return UniversalToNative(RelativeToAbsolute(path, choice, false, style), style);
}

std::string GetAbsolutePathQuiet(std::string_view path, PathStyle style) {
    return RelativeToAbsolute(path, BaseChoice::Base, true, style);
}

std::string GetNonRelativePath(std::string_view path, PathStyle style) {
    if (path.empty())
        return {};
    return NativeToUniversal(GetUNCFileName(path, style));
}

std::string GetMatchNameRelativeForFile(std::string_view quoted, PathStyle style) {
    if (quoted.find('"') == std::string_view::npos)
        return std::string(quoted);
    std::string_view name = Unquoted(quoted);
    if (name.empty())
        return Quote({});
    return Quote(AbsoluteToRelative(NativeToUniversal(name), style));
}

std::string GetMatchNameAbsoluteFromFile(std::string_view quoted, PathStyle style) {
    if (quoted.find('"') == std::string_view::npos)
        return std::string(quoted);
    std::string absolute =
        RelativeToAbsolute(Unquoted(quoted), BaseChoice::MatchBase, false, style);
    return Quote(UniversalToNative(absolute, style));
}

} // namespace fileio::detail

void SetBasePath(const String& fileName) {
    if (fileName.IsEmpty())
        return;
    using namespace fileio::detail;
    BaseState& state = State();
    state.fileName.assign(fileName.View());
    RemoveDoubleSeparators(state.fileName);
    state.basePath = NativeToUniversal(PathOnly(state.fileName));
    state.matchBase = state.basePath;
    state.depth = PathDepth(state.basePath);
}

String GetBasePath() {
    return String(fileio::detail::State().fileName);
}

void FreeBasePaths() {
    auto& state = fileio::detail::State();
    for (std::string* text : {&state.fileName, &state.basePath, &state.matchBase}) {
        text->clear();
        text->shrink_to_fit();
    }
}
