// Progress.cpp - the loading progress of a stream, shown through StatusMessage.
//
// An opener calls InitProgress: a stream that starts the progress control owns it; one that
// finds a plain (type 0) control already running saves that control's text and puts it back
// when it ends; one that finds a control of another type shows nothing. Close (and the
// destructor) call UnInitProgress.

#include "fileio/stream/VarnStream.h"

#include "fileio/handlers/ResourceStrings.h"
#include "fileio/handlers/StatusMessage.h"
#include "handlers/ResourceIds.h"

#include <climits>

namespace {

/// "Loading [ %1 ]" with the file's name (without its folder).
String LoadingMessage(const String& path) {
    String message = GetResourceString(fileio::detail::resource::kLoadingFile);
    message.Replace(String("%1"), path.GetNameOnly());
    return message;
}

/// The progress control's range: the meter shows hundredths of the data.
constexpr int kMeterRange = 100;

const char* TextOf(const String& text) {
    return text.Get() != nullptr ? text.Get() : "";
}

} // namespace

void VarnStream::InitProgress(const String& path) {
    Progress& p = m_progress;
    if (p.totalLength == 0) {
        p.nextMeterPosition = 1;
        p.initialised = true;
        return;
    }
    const bool active = StatusMessage::IsProgressControlActive();
    p.ownsControl = !active;
    if (active) {
        if (StatusMessage::GetCurrentType() != 0)
            return;
        p.savedStatusText = StatusMessage::GetStatusMessage();
    }
    const String message = LoadingMessage(path);
    p.displaying = true;
    StatusMessage::SetDisplaying(true);
    StatusMessage::InitializeProgressControl(TextOf(message), 0, 0, kMeterRange);
    const unsigned long long step = p.totalLength / kMeterRange;
    p.meterStep = step > INT_MAX ? INT_MAX : static_cast<int>(step);
    p.nextMeterPosition = static_cast<unsigned long long>(p.meterStep);
    p.initialised = true;
}

void VarnStream::UnInitProgress() {
    Progress& p = m_progress;
    if (!p.initialised)
        return;
    if (m_fileName.IsNotEmpty() && IsLoading() && StatusMessage::IsProgressControlActive()) {
        if (p.ownsControl)
            StatusMessage::UninitializeProgressControl();
        else
            StatusMessage::InitializeProgressControl(TextOf(p.savedStatusText), 0, 0, kMeterRange);
    }
    if (p.displaying) {
        StatusMessage::SetDisplaying(false);
        p.displaying = false;
    }
    p.initialised = false;
}

void VarnStream::AdvanceMeter() {
    Progress& p = m_progress;
    if (p.meterStep == 0)
        return;
    const unsigned long long position = Position();
    if (position >= p.nextMeterPosition) {
        StatusMessage::SetProgress(static_cast<int>(position / static_cast<unsigned>(p.meterStep)));
        p.nextMeterPosition += static_cast<unsigned>(p.meterStep);
    }
}

// Streams whose progress InitProgress started are advanced by their transport, not here.
void VarnStream::SetStatusMeter() {
    if (!m_progress.initialised)
        AdvanceMeter();
}
