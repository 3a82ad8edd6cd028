// DataExchange.cpp - the exchange object and the exchange of times with edit controls.
#include "fileio/ui/DataExchange.h"

#include "ui/InvalidFrameMessage.h"

namespace {

// The longest time text an edit control hands over.
constexpr int MaxTimeTextLength = 31;

} // namespace

DataExchangeHost::~DataExchangeHost() = default;

String DataExchange::GetControlText(int id, int maxLength) {
    m_lastControl = id;
    String text = m_host.GetControlText(id);
    if (maxLength < 0 || text.GetLength() <= static_cast<unsigned long long>(maxLength))
        return text;
    return String(text.Get(), maxLength);
}

void DataExchange::SetControlText(int id, const String& text) {
    m_lastControl = id;
    m_host.SetControlText(id, text);
}

void DataExchange::Fail() noexcept {
    if (m_failed)
        return;
    m_failed = true;
    m_failedControl = m_lastControl;
}

void DDX_Time(DataExchange* pDX, int nIDC, Time& value, int fps, TimeUnit unit,
              int zeroBasedCells) {
    if (pDX->HasFailed())
        return;
    const bool zeroBased = zeroBasedCells != 0;
    if (pDX->IsSaving())
        value = pDX->GetControlText(nIDC, MaxTimeTextLength).ToTime(fps, unit, zeroBased);
    pDX->SetControlText(nIDC, value.ToString(fps, unit, zeroBased));
}

void DDX_Time(DataExchange* pDX, int nIDC, Time& value, int fps, int unit, int zeroBasedCells) {
    DDX_Time(pDX, nIDC, value, fps, static_cast<TimeUnit>(unit), zeroBasedCells);
}

void DDV_MinMaxTime(DataExchange* pDX, Time value, Time min, Time max, int /*fps*/,
                    TimeUnit /*unit*/) {
    if (pDX->HasFailed() || (min <= value && value <= max) || !pDX->IsSaving())
        return;
    fileio::detail::ShowInvalidFrameNumberMessage();
    pDX->Fail();
}

void DDV_MinMaxTime(DataExchange* pDX, Time value, Time min, Time max, int fps, int unit) {
    DDV_MinMaxTime(pDX, value, min, max, fps, static_cast<TimeUnit>(unit));
}
