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

const char* TextOf(const String& text) {
    return text.Get() != nullptr ? text.Get() : "";
}

} // namespace

void VarnStream::InitProgress(const String& path) {
    if (m_totalLength == 0) {
        m_nextMeterPosition = 1;
        m_progressInitialised = true;
        return;
    }
    const bool active = StatusMessage::IsProgressControlActive();
    m_ownsProgressControl = !active;
    if (active) {
        if (StatusMessage::GetCurrentType() != 0)
            return;
        m_savedStatusText = StatusMessage::GetStatusMessage();
    }
    const String message = LoadingMessage(path);
    m_displaying = true;
    StatusMessage::SetDisplaying(true);
    StatusMessage::InitializeProgressControl(TextOf(message), 0, 0, 100);
    const unsigned long long step = m_totalLength / 100;
    m_meterStep = step > INT_MAX ? INT_MAX : static_cast<int>(step);
    m_nextMeterPosition = static_cast<unsigned long long>(m_meterStep);
    m_progressInitialised = true;
}

void VarnStream::UnInitProgress() {
    if (!m_progressInitialised)
        return;
    if (m_fileName.IsNotEmpty() && IsLoading() && StatusMessage::IsProgressControlActive()) {
        if (m_ownsProgressControl)
            StatusMessage::UninitializeProgressControl();
        else
            StatusMessage::InitializeProgressControl(TextOf(m_savedStatusText), 0, 0, 100);
    }
    if (m_displaying) {
        StatusMessage::SetDisplaying(false);
        m_displaying = false;
    }
    m_progressInitialised = false;
}

// Streams whose progress InitProgress started are advanced by their transport, not here.
void VarnStream::SetStatusMeter() {
    if (m_progressInitialised || m_meterStep == 0)
        return;
    const unsigned long long position = GetPos();
    if (position >= m_nextMeterPosition) {
        StatusMessage::SetProgress(static_cast<int>(position / static_cast<unsigned>(m_meterStep)));
        m_nextMeterPosition += static_cast<unsigned>(m_meterStep);
    }
}
