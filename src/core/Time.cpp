// Time.cpp - construction, conversion, arithmetic and frame snapping of Time.
//
// Everything that touches floating point lives here rather than inline in the header, so
// that it is compiled with the library's flags (no contraction, no excess precision) and
// not with whatever the host uses.
#include "fileio/core/Time.h"

#include "core/Rounding.h"

#include <cmath>

namespace {

using fileio::detail::FusedMultiplyAdd;
using fileio::detail::RoundToNearestEven;

// The double nearest to 1/135000.
constexpr double SecondsPerTick = 7.4074074074074075e-06;
constexpr double TicksPerSecond = 135000.0;

long long SecondsToTicks(double seconds) {
    return RoundToNearestEven(seconds * TicksPerSecond);
}

long long FrameToTicks(double frame, double fps) {
    return RoundToNearestEven(frame / fps * TicksPerSecond);
}

long long FrameLength(double fps) {
    return RoundToNearestEven(TicksPerSecond / fps);
}

// The truncating remainder of ticks by a frame length. A frame length of 0 makes every tick
// a frame boundary; -1 (from absurd negative rates) divides everything.
long long FrameRemainder(long long ticks, long long frameLength) {
    if (frameLength == 0 || frameLength == -1)
        return 0;
    return ticks % frameLength;
}

long long WrappingAdd(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) +
                                  static_cast<unsigned long long>(b));
}

long long WrappingSubtract(long long a, long long b) {
    return static_cast<long long>(static_cast<unsigned long long>(a) -
                                  static_cast<unsigned long long>(b));
}

} // namespace

// ---- construction -----------------------------------------------------------------------

Time::Time(float seconds) noexcept : m_ticks(0) {
    if (seconds < 0 || seconds > 0)
        m_ticks = RoundToNearestEven(seconds * 135000.0f);
}

Time::Time(double seconds) noexcept : m_ticks(0) {
    if (seconds < 0 || seconds > 0)
        m_ticks = SecondsToTicks(seconds);
}

Time::Time(double frame, double fps) noexcept : m_ticks(FrameToTicks(frame, fps)) {}

Time& Time::operator=(float seconds) noexcept {
    return *this = Time(seconds);
}

Time& Time::operator=(double seconds) noexcept {
    return *this = Time(seconds);
}

// ---- reading ------------------------------------------------------------------------------

float Time::GetTicksAsFloat() const noexcept {
    return static_cast<float>(m_ticks);
}

float Time::GetSeconds() const noexcept {
    return static_cast<float>(GetSecondsDouble());
}

double Time::GetSecondsDouble() const noexcept {
    if (m_ticks == 0)
        return 0.0;
    return static_cast<double>(m_ticks) * SecondsPerTick;
}

float Time::GetFrame(double fps) const noexcept {
    return static_cast<float>(static_cast<double>(m_ticks) * SecondsPerTick * fps);
}

int Time::GetFrameInt(double fps) const noexcept {
    return fileio::detail::TruncateToInt(
        FusedMultiplyAdd(static_cast<double>(m_ticks) * SecondsPerTick, fps, 0.5));
}

float Time::GetCell(double fps) const noexcept {
    return static_cast<float>(static_cast<double>(GetFrame(fps)) + 1.0);
}

bool Time::IsOnFrame(double fps) const noexcept {
    return FrameRemainder(m_ticks, FrameLength(fps)) == 0;
}

// ---- setting ------------------------------------------------------------------------------

void Time::SetSeconds(double s) noexcept {
    m_ticks = SecondsToTicks(s);
}

void Time::SetFrame(double frame, double fps) noexcept {
    m_ticks = FrameToTicks(frame, fps);
}

void Time::SetCell(double cell, double fps) noexcept {
    m_ticks = RoundToNearestEven(FusedMultiplyAdd(cell, TicksPerSecond, -TicksPerSecond) / fps);
}

void Time::StepFrame(double fps) noexcept {
    m_ticks = WrappingAdd(m_ticks, FrameLength(fps));
}

void Time::StepFrameBack(double fps) noexcept {
    m_ticks = WrappingSubtract(m_ticks, FrameLength(fps));
}

void Time::StepFrames(double n, double fps) noexcept {
    m_ticks = WrappingAdd(m_ticks, RoundToNearestEven(TicksPerSecond / fps * n));
}

void Time::StepFramesBack(double n, double fps) noexcept {
    m_ticks = WrappingSubtract(m_ticks, RoundToNearestEven(TicksPerSecond / fps * n));
}

// ---- frame snapping -------------------------------------------------------------------------

void Time::SnapToFrame(double fps) noexcept {
    const long long frameLength = FrameLength(fps);
    const double sign = m_ticks >= 0 ? 1.0 : -1.0;
    // Half a frame toward the time's own side: |0.5 x fl| is at most 2^62, so it converts.
    const long long half =
        static_cast<long long>(std::trunc(sign * 0.5 * static_cast<double>(frameLength)));
    const long long v = WrappingAdd(m_ticks, half);
    m_ticks = v - FrameRemainder(v, frameLength);
}

void Time::FloorToFrame(double fps) noexcept {
    m_ticks -= FrameRemainder(m_ticks, FrameLength(fps));
}

void Time::CeilToFrame(double fps) noexcept {
    const long long frameLength = FrameLength(fps);
    const long long r = FrameRemainder(m_ticks, frameLength);
    if (r != 0)
        m_ticks = WrappingAdd(m_ticks - r, frameLength);
}

void Time::MoveToFrame(double fps, Time direction) noexcept {
    if (direction.m_ticks < 1)
        FloorToFrame(fps);
    else
        CeilToFrame(fps);
}

// ---- arithmetic ------------------------------------------------------------------------------

Time Time::operator*(double factor) const noexcept {
    return RoundToNearestEven(static_cast<double>(m_ticks) * factor);
}

Time& Time::operator*=(double factor) noexcept {
    return *this = *this * factor;
}

Time Time::operator/(double d) const noexcept {
    if (!(d >= 1e-30))
        return Time();
    return RoundToNearestEven(static_cast<double>(m_ticks) / d);
}

Time& Time::operator/=(double d) noexcept {
    m_ticks = RoundToNearestEven(static_cast<double>(m_ticks) / d);
    return *this;
}

float Time::operator/(const Time& t) const noexcept {
    if (t.m_ticks == 0)
        return 0.0f;
    return static_cast<float>(m_ticks) / static_cast<float>(t.m_ticks);
}
