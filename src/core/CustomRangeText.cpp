// CustomRangeText.cpp - reading and writing a CustomRange as text.
#include "core/CustomRangeText.h"

#include "fileio/core/CustomRange.h"

#include <cmath>
#include <limits>

namespace fileio::detail {
namespace {

bool IsStepMark(char c) noexcept {
    return c == 's' || c == 'S';
}

bool IsNumberCharacter(char c) noexcept {
    return (c >= '0' && c <= '9') || c == ':';
}

/// The one pass of NormaliseRangeText, with its flags.
class Normaliser {
public:
    explicit Normaliser(std::size_t capacity) { m_out.reserve(capacity + capacity / 2 + 1); }

    void Take(char c) {
        if (IsNumberCharacter(c) || (IsStepMark(c) && m_inNumber && m_afterDash))
            Copy(c);
        else if (c == '-' && m_inNumber && m_dashAllowed)
            StartSpanEnd();
        else if (!m_justSeparated && m_inNumber) {
            if (c == ' ')
                m_spacePending = true;
            else
                EndItem();
        }
    }

    std::string Finish() {
        if (!m_out.empty() && m_out.back() == ',')
            m_out.pop_back();
        return std::move(m_out);
    }

private:
    void Copy(char c) {
        const bool stepMark = IsStepMark(c);
        // A blank between two numbers separates them; one next to a step mark does not.
        // Either way the blank is used up here.
        if (m_spacePending && !m_justSeparated && !stepMark && !m_lastWasStepMark)
            m_out += ',';
        m_spacePending = false;
        m_lastWasStepMark = stepMark;
        m_justSeparated = false;
        m_inNumber = true;
        m_out += c;
    }

    void StartSpanEnd() {
        m_out += '-';
        m_inNumber = false;
        m_dashAllowed = false;
        m_spacePending = false;
        m_afterDash = true;
        m_justSeparated = false;
    }

    void EndItem() {
        if (m_lastWasStepMark)
            m_out += '1'; // a bare step mark means step 1
        m_out += ',';
        m_lastWasStepMark = false;
        m_justSeparated = true;
        m_inNumber = false;
        m_afterDash = false;
        m_dashAllowed = true;
        m_spacePending = false;
    }

    std::string m_out;
    bool m_inNumber = false;
    bool m_justSeparated = false;
    bool m_dashAllowed = true;
    bool m_afterDash = false;
    bool m_spacePending = false;
    bool m_lastWasStepMark = false;
};

} // namespace

std::string NormaliseRangeText(std::string_view text) {
    Normaliser normaliser(text.size());
    for (const char c : text)
        normaliser.Take(c);
    return normaliser.Finish();
}

int StepFramesOf(Time step, int fps) noexcept {
    if (fps <= 0)
        return 0;
    // The tick count of a frame count is rounded to the nearest tick; half a tick more
    // (toward the count's sign) undoes that rounding before truncation.
    const double ticks = static_cast<double>(step.GetTicks());
    const double frames =
        (ticks + std::copysign(0.5, ticks)) * fps / static_cast<double>(Time::TicksPerSecond);
    const double whole = std::trunc(frames);
    if (!(whole >= std::numeric_limits<int>::min() && whole <= std::numeric_limits<int>::max()))
        return 0;
    return static_cast<int>(whole);
}

} // namespace fileio::detail

namespace {

/// A time typed in unit at fps.
Time ReadTime(std::string_view text, int fps, TimeUnit unit, bool zeroBasedCells) {
    return String(std::string(text)).ToTime(fps, unit, zeroBasedCells);
}

void AppendText(std::string& out, const String& text) {
    out += text.View();
}

} // namespace

void CustomRange::Set(const String& text, int fps, TimeUnit unit) {
    DeleteRangeList();
    const std::string items = fileio::detail::NormaliseRangeText(text.View());
    std::string_view rest = items;
    while (!rest.empty()) {
        const std::size_t comma = rest.find(',');
        const std::string_view item = rest.substr(0, comma);
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
        if (item.empty())
            break; // an empty item ends the list

        const std::size_t dash = item.find('-');
        if (dash == std::string_view::npos) {
            const Time frame = ReadTime(item, fps, unit, false);
            AppendItem(frame, frame, 1);
            continue;
        }
        const std::string_view afterDash = item.substr(dash + 1);
        const std::size_t mark = afterDash.find_first_of("sS");
        const std::string_view endText = afterDash.substr(0, mark);
        if (endText.empty())
            continue; // a span without an end adds nothing
        int step = 1;
        if (mark != std::string_view::npos) {
            const std::string_view stepText = afterDash.substr(mark + 1);
            if (stepText.empty())
                continue; // a step mark without a step at the end of the text
            step = fileio::detail::StepFramesOf(ReadTime(stepText, fps, unit, true), fps);
        }
        AppendItem(ReadTime(item.substr(0, dash), fps, unit, false),
                   ReadTime(endText, fps, unit, false), step);
    }
}

String CustomRange::ToString(int fps, TimeUnit unit, bool multiline) {
    if (!m_text.IsEmpty() && fps == 0 && unit == SMPTE)
        return m_text;

    const std::string_view separator = multiline ? ",\r\n" : ",";
    std::string out;
    for (const CustomTimeRange* item : m_items) {
        if (item == nullptr)
            continue;
        AppendText(out, item->start.ToString(fps, unit, false));
        if (item->end != item->start) {
            out += '-';
            AppendText(out, item->end.ToString(fps, unit, false));
            if (item->step != 1) {
                out += " s";
                AppendText(out, Time(static_cast<double>(item->step), static_cast<double>(fps))
                                    .ToString(fps, unit, true));
            }
        }
        out += separator;
    }
    if (!out.empty())
        out.resize(out.size() - separator.size());
    m_text = String(out);
    return m_text;
}
