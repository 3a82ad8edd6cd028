// ResourceStrings.cpp - the table of the library's string resources.

#include "fileio/handlers/ResourceStrings.h"

#include "handlers/ResourceIds.h"

#include <algorithm>
#include <iterator>

namespace {

struct Resource {
    unsigned int id;
    const char* text;
};

using namespace fileio::detail::resource;

// Sorted by id.
constexpr Resource kResources[] = {
    {kLocateFileTitle, "Locate File: %1"},
    {kCancelAllMissingFiles, "Cancel all remaining missing files during this load."},
    {kApplicationCaption, "FileIO"},
    {kEnterValidFrame, "Please enter a valid frame number."},
    {kLoadingFile, "Loading [ %1 ]"},
    {kYesButton, "Yes"},
    {kNoButton, "No"},
    {kOkButton, "OK"},
    {kDontAskAgain, "Don't ask me again"},
    {kDontShowAgain, "Don't show this again"},
    {kReadOnlyFile, "The file %1 is read-only and cannot be saved."},
};

static_assert(std::is_sorted(std::begin(kResources), std::end(kResources),
                             [](const Resource& a, const Resource& b) { return a.id < b.id; }));

} // namespace

String GetResourceString(unsigned int id) {
    const auto found = std::lower_bound(
        std::begin(kResources), std::end(kResources), id,
        [](const Resource& resource, unsigned int wanted) { return resource.id < wanted; });
    if (found == std::end(kResources) || found->id != id)
        return String();
    return String(found->text);
}
