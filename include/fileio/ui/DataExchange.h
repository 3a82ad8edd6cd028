// DataExchange.h - moving values between a dialog's edit controls and the host's variables.
//
// A dialog's exchange runs in one of two directions: loading shows the variables in the
// controls, saving reads the controls back into the variables and validates them. The
// library knows nothing of windows: the host implements DataExchangeHost, which reads and
// writes an edit control's text by its id, and hands it to a DataExchange for one pass of
// DDX_ and DDV_ calls.
//
// A failed validation is recorded in the exchange rather than thrown: once an exchange has
// failed, the remaining DDX_ and DDV_ calls of the pass do nothing, so no variable after the
// failing one changes. The host then reads HasFailed() and GetFailedControl() (to put the
// focus back on the offending control) and keeps the dialog open.
//
// Thread safety: an exchange belongs to the thread of its dialog.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"
#include "fileio/core/Time.h"

/// The host's side of an exchange: the text of the dialog's edit controls, by id.
/// Implementations must not throw.
class FILEIO_API DataExchangeHost {
public:
    virtual ~DataExchangeHost();
    /// The current text of control `id` (null when it has none).
    virtual String GetControlText(int id) = 0;
    /// Replaces the text of control `id`.
    virtual void SetControlText(int id, const String& text) = 0;
};

/// One pass of exchange between a dialog's controls and variables, in one direction.
class FILEIO_API DataExchange {
public:
    /// saveAndValidate true: controls to variables, with validation; false: variables to
    /// controls. The host must outlive the exchange.
    DataExchange(DataExchangeHost& host, bool saveAndValidate) noexcept
        : m_host(host), m_saveAndValidate(saveAndValidate) {}
    DataExchange(const DataExchange&) = delete;
    DataExchange& operator=(const DataExchange&) = delete;

    /// True when the exchange reads the controls back into the variables.
    [[nodiscard]] bool IsSaving() const noexcept { return m_saveAndValidate; }

    /// The text of control `id`, at most maxLength bytes of it; remembers id as the control
    /// the next validation is about.
    String GetControlText(int id, int maxLength);
    /// Sets the text of control `id`; remembers id as the control last exchanged.
    void SetControlText(int id, const String& text);

    /// Marks the exchange failed at the control last exchanged. The first failure is kept.
    void Fail() noexcept;
    [[nodiscard]] bool HasFailed() const noexcept { return m_failed; }
    /// The id of the control whose value failed (-1 before any failure, or when no control
    /// had been exchanged).
    [[nodiscard]] int GetFailedControl() const noexcept { return m_failedControl; }

private:
    DataExchangeHost& m_host;
    bool m_saveAndValidate;
    bool m_failed = false;
    int m_lastControl = -1;
    int m_failedControl = -1;
};

/// Exchanges a time with edit control nIDC, shown in a unit at a rate. Saving reads the
/// control's text (at most 31 characters) with String::ToTime(fps, unit, zeroBasedCells != 0)
/// into value. In both directions the control's text then becomes
/// value.ToString(fps, unit, zeroBasedCells != 0), so a saved entry is shown back normalised.
FILEIO_API void DDX_Time(DataExchange* pDX, int nIDC, Time& value, int fps, TimeUnit unit,
                         int zeroBasedCells);
/// The same with the unit as an int.
FILEIO_API void DDX_Time(DataExchange* pDX, int nIDC, Time& value, int fps, int unit,
                         int zeroBasedCells);

/// When saving, a value outside [min, max] fails the exchange after telling the user
/// "Please enter a valid frame number." (string resource 3056, with the exclamation icon).
/// Loading never fails. fps and unit are not used.
FILEIO_API void DDV_MinMaxTime(DataExchange* pDX, Time value, Time min, Time max, int fps,
                               TimeUnit unit);
/// The same with the unit as an int.
FILEIO_API void DDV_MinMaxTime(DataExchange* pDX, Time value, Time min, Time max, int fps,
                               int unit);
