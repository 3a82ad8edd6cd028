// Time.h - a point or span on an animation's time line, measured in ticks.
//
// A Time is one signed 64-bit tick count at 135000 ticks per second, a common multiple of
// the usual frame rates: 24, 25, 30 and 60 fps and their divisors all give whole ticks per
// frame. Times add, subtract and compare exactly whatever the frame rate. A Time keeps no
// frame rate of its own: every frame or cell operation takes the rate (frames per second)
// from its caller. Frames count from 0, cells from 1 (cell 1 is time 0).
//
// The frame length at a rate f is llrint(135000 / f) ticks: 5625 at 24 fps, 5400 at 25,
// 4500 at 30, 4505 at 29.97.
//
// Exactness. Every conversion that rounds to ticks rounds to the nearest integer, ties to
// even, whatever rounding mode the host has set; a value outside the 64-bit range (or NaN)
// gives the MIN tick count, as the processor's own conversion does. All floating-point
// work is done inside the library, compiled without contraction or excess precision, so
// the same input gives the same tick count on every platform and compiler.
//
// Deliberate quirks kept from the suite's files and host code:
//   - Time(int) and operator=(int) take SECONDS, Time(long long) and operator=(long long)
//     take TICKS: Time(2) is 270000 ticks, Time(2LL) is 2 ticks.
//   - IsMinStep() answers for the TAGGED value -1, exactly as IsTagged(), and not for the
//     MINSTEP value 1.
//   - operator/(double) gives 0 for a divisor below 1e-30 (zero or negative), while
//     operator/=(double) divides by anything.
//   - FloorToFrame truncates toward zero and CeilToFrame of a negative time off a frame
//     lands one frame above the truncated value.
//   - Integer arithmetic wraps on overflow; the special values are not protected from it.
//
// Frame rates whose frame length is 0 (270000 fps and above) are outside the domain of the
// frame operations; there every tick counts as a frame boundary (snapping changes nothing).
//
// Thread safety: a plain value.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

#include <compare>

/// The text units of a time. The underlying type is fixed so that other headers can
/// declare the enumeration ahead.
enum TimeUnit : int {
    SMPTE = 0,  ///< minutes:seconds:frames
    FRAMES = 1, ///< a frame number
    CELLS = 2,  ///< a cell number, 1-based unless the caller says otherwise
};

class FILEIO_API Time {
public:
    /// The special values, each a reserved tick count.
    enum TimeType {
        MINSTEP = 0, ///< 1 tick: the smallest positive step
        MAX = 1,     ///< the largest tick count: no upper bound
        TAGGED = 2,  ///< -1 tick: tagged or unset
        MIN = 3,     ///< the smallest tick count: no lower bound
    };

    static constexpr long long TicksPerSecond = 135000;
    static constexpr long long MaxTicks = 9223372036854775807LL;
    static constexpr long long MinTicks = -MaxTicks - 1;

    // ---- construction and assignment ------------------------------------------------------

    /// 0 ticks.
    constexpr Time() noexcept : m_ticks(0) {}
    constexpr Time(const Time&) noexcept = default;
    constexpr Time(Time&&) noexcept = default;
    constexpr Time& operator=(const Time&) noexcept = default;
    constexpr Time& operator=(Time&&) noexcept = default;

    /// Whole seconds: seconds x 135000 as a 64-bit product.
    constexpr Time(int seconds) noexcept
        : m_ticks(static_cast<long long>(seconds) * TicksPerSecond) {}
    /// Seconds: 0 when the value is neither below nor above 0 (0, -0, NaN), else
    /// llrint(seconds x 135000) with the product in single precision.
    Time(float seconds) noexcept;
    /// Seconds: as the float form, with the product in double precision.
    Time(double seconds) noexcept;
    /// A frame at a rate: llrint(frame / fps x 135000).
    Time(double frame, double fps) noexcept;
    /// A special value; a value outside 0 to 3 gives 0 ticks.
    constexpr Time(TimeType type) noexcept : m_ticks(TicksOf(type)) {}
    /// Ticks as given.
    constexpr Time(long long ticks) noexcept : m_ticks(ticks) {}

    constexpr Time& operator=(int seconds) noexcept { return *this = Time(seconds); }
    Time& operator=(float seconds) noexcept;
    Time& operator=(double seconds) noexcept;
    constexpr Time& operator=(long long ticks) noexcept {
        m_ticks = ticks;
        return *this;
    }

    // ---- reading ----------------------------------------------------------------------------

    [[nodiscard]] constexpr long long GetTicks() const noexcept { return m_ticks; }
    [[nodiscard]] float GetTicksAsFloat() const noexcept;
    /// Ticks x 7.4074074074074075e-06 (the double nearest 1/135000), then narrowed; 0 for 0.
    [[nodiscard]] float GetSeconds() const noexcept;
    [[nodiscard]] double GetSecondsDouble() const noexcept;
    /// Ticks x 7.4074074074074075e-06 x fps, narrowed to float.
    [[nodiscard]] float GetFrame(double fps) const noexcept;
    /// (ticks x 7.4074074074074075e-06) x fps + 0.5 as one fused multiply-add, truncated
    /// toward zero: positive times round half up, negative ones come out one closer to zero
    /// than rounding would give (-1.7 frames gives -1). A frame number outside the int range
    /// (or NaN) gives the smallest int.
    [[nodiscard]] int GetFrameInt(double fps) const noexcept;
    /// The frame number narrowed to float, plus 1: 0 ticks is cell 1.
    [[nodiscard]] float GetCell(double fps) const noexcept;
    /// The absolute tick count; MIN stays MIN.
    [[nodiscard]] constexpr Time GetAbsoluteValue() const noexcept {
        return m_ticks < 0 ? Negated(m_ticks) : m_ticks;
    }

    [[nodiscard]] constexpr bool IsZero() const noexcept { return m_ticks == 0; }
    [[nodiscard]] constexpr bool IsMax() const noexcept { return m_ticks == MaxTicks; }
    [[nodiscard]] constexpr bool IsMin() const noexcept { return m_ticks == MinTicks; }
    [[nodiscard]] constexpr bool IsTagged() const noexcept { return m_ticks == -1; }
    /// True for -1 ticks, exactly as IsTagged(); false for the MINSTEP value 1. Kept so.
    [[nodiscard]] constexpr bool IsMinStep() const noexcept { return m_ticks == -1; }
    /// The tick count is a whole number of frame lengths.
    [[nodiscard]] bool IsOnFrame(double fps) const noexcept;

    // ---- setting ----------------------------------------------------------------------------

    constexpr void SetTicks(long long ticks) noexcept { m_ticks = ticks; }
    /// llrint(s x 135000); NaN is not treated apart.
    void SetSeconds(double s) noexcept;
    /// llrint(frame / fps x 135000).
    void SetFrame(double frame, double fps) noexcept;
    /// llrint((cell x 135000 - 135000) / fps), the numerator as one fused multiply-add:
    /// cell 1 is time 0.
    void SetCell(double cell, double fps) noexcept;
    constexpr void SetMax() noexcept { m_ticks = MaxTicks; }
    constexpr void SetMin() noexcept { m_ticks = MinTicks; }
    /// Stores the MINSTEP value 1.
    constexpr void SetMinStep() noexcept { m_ticks = 1; }
    /// on: -1 ticks; off: 0.
    constexpr void SetTagged(bool on) noexcept { m_ticks = on ? -1 : 0; }
    constexpr void Invert() noexcept { m_ticks = Negated(m_ticks); }
    /// Adds or subtracts one frame length.
    void StepFrame(double fps) noexcept;
    void StepFrameBack(double fps) noexcept;
    /// Adds or subtracts llrint(135000 / fps x n) ticks.
    void StepFrames(double n, double fps) noexcept;
    void StepFramesBack(double n, double fps) noexcept;
    constexpr void AddTicks(long long ticks) noexcept { *this += Time(ticks); }

    // ---- frame snapping ----------------------------------------------------------------------

    /// To the nearest frame, halves away from zero, symmetric for negative times: with
    /// fl the frame length, v = ticks + trunc(+-0.5 x fl), ticks = v - v % fl.
    void SnapToFrame(double fps) noexcept;
    /// ticks - ticks % fl: for negative times this moves toward zero.
    void FloorToFrame(double fps) noexcept;
    /// Off a frame: ticks - ticks % fl + fl. At 30 fps -10 ticks becomes 4500, not 0.
    void CeilToFrame(double fps) noexcept;
    /// FloorToFrame when direction is 0 or negative, else CeilToFrame.
    void MoveToFrame(double fps, Time direction) noexcept;

    // ---- arithmetic (wraps on overflow) --------------------------------------------------------

    friend constexpr Time operator+(const Time& a, const Time& b) noexcept {
        return Wrapped(static_cast<unsigned long long>(a.m_ticks) +
                       static_cast<unsigned long long>(b.m_ticks));
    }
    friend constexpr Time operator-(const Time& a, const Time& b) noexcept {
        return Wrapped(static_cast<unsigned long long>(a.m_ticks) -
                       static_cast<unsigned long long>(b.m_ticks));
    }
    constexpr Time operator-() const noexcept { return Negated(m_ticks); }
    constexpr Time& operator+=(const Time& t) noexcept { return *this = *this + t; }
    constexpr Time& operator-=(const Time& t) noexcept { return *this = *this - t; }

    /// The product of the two tick counts.
    constexpr Time operator*(const Time& t) const noexcept {
        return Wrapped(static_cast<unsigned long long>(m_ticks) *
                       static_cast<unsigned long long>(t.m_ticks));
    }
    constexpr Time& operator*=(const Time& t) noexcept { return *this = *this * t; }
    /// llrint(ticks x factor).
    Time operator*(double factor) const noexcept;
    Time& operator*=(double factor) noexcept;

    /// llrint(ticks / d) when d is at least 1e-30; 0 otherwise (zero, negative or NaN).
    Time operator/(double d) const noexcept;
    /// llrint(ticks / d) for any d.
    Time& operator/=(double d) noexcept;
    /// float(ticks) / float(t's ticks); 0 when t is 0 ticks.
    float operator/(const Time& t) const noexcept;
    /// The integer quotient, truncated toward zero. REQUIRES: t is not 0 ticks (a 0 divisor
    /// leaves the time unchanged). MIN / -1 wraps to MIN.
    constexpr Time& operator/=(const Time& t) noexcept {
        if (t.m_ticks == -1)
            Invert();
        else if (t.m_ticks != 0)
            m_ticks /= t.m_ticks;
        return *this;
    }
    /// The truncating remainder (sign of the dividend); a 0 divisor gives the dividend.
    constexpr Time operator%(const Time& t) const noexcept {
        if (t.m_ticks == 0)
            return *this;
        if (t.m_ticks == -1)
            return Time();
        return m_ticks % t.m_ticks;
    }

    friend constexpr bool operator==(const Time& a, const Time& b) noexcept = default;
    friend constexpr std::strong_ordering operator<=>(const Time& a,
                                                      const Time& b) noexcept = default;

    // ---- text forms ---------------------------------------------------------------------------

    /// The time in a unit at a rate, seconds taken as a float:
    ///   SMPTE: "mm:ss:ff" with minutes not wrapped into hours and frames with up to two
    ///          decimals ("%02d:%02d:%02.4g", "%03.5g" for the frames field when fps >= 100),
    ///          "-" in front of negative times: at 30 fps 1.5 s is "00:01:15", 0.51 s is
    ///          "00:00:15.3".
    ///   FRAMES: the frame number, "%g" of the value rounded to two decimals.
    ///   CELLS: the frame number plus 1 (plus 0 with zeroBasedCells), likewise.
    /// Any other unit gives the null string. The process's locale plays no part.
    [[nodiscard]] String ToString(double fps, TimeUnit unit, bool zeroBasedCells) const;

private:
    static constexpr long long TicksOf(TimeType type) noexcept {
        switch (type) {
        case MINSTEP:
            return 1;
        case MAX:
            return MaxTicks;
        case TAGGED:
            return -1;
        case MIN:
            return MinTicks;
        }
        return 0;
    }
    // Integer arithmetic wraps: it is done on the unsigned tick pattern.
    static constexpr long long Wrapped(unsigned long long ticks) noexcept {
        return static_cast<long long>(ticks);
    }
    static constexpr long long Negated(long long ticks) noexcept {
        return Wrapped(0ULL - static_cast<unsigned long long>(ticks));
    }

    long long m_ticks;
};

static_assert(sizeof(Time) == 8, "a Time is exactly its tick count");

/// A span of time as the suite's files store it: start, then end.
struct TimeRange {
    Time start;
    Time end;
};

static_assert(sizeof(TimeRange) == 16);

/// A wall-clock duration for progress texts: "%2u:%02u:%02u" of hours (not limited),
/// minutes and seconds, so 3725 gives " 1:02:05". A negative count, or 0 without showZero,
/// gives "- - : - - : - -".
FILEIO_API String FormatTime(int seconds, bool showZero);
