// time_text.cpp - String::ToTime over arbitrary bytes, at several rates and in every unit.
//
// The first byte picks the rate, the unit and the cell base; the rest is the text. Every
// time read is written back with Time::ToString at the same rate and read again: nothing
// may crash, hang or read outside the text, whatever the bytes.
#include "fileio/core/Time.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    // Ordinary rates, the rates where the frame field widens, and rates outside the domain.
    static const int rates[] = {24, 25, 30, 60, 99, 100, 120, 1000, 0, -30, 300000, 1};
    const std::uint8_t selector = data[0];
    const int fps = rates[selector % (sizeof rates / sizeof rates[0])];
    const TimeUnit unit = static_cast<TimeUnit>((selector / 16) % 4); // 3 is no unit
    const bool zeroBasedCells = (selector & 0x80) != 0;

    const String text(reinterpret_cast<const char*>(data + 1), static_cast<int>(size - 1));
    const Time time = text.ToTime(fps, unit, zeroBasedCells);
    const String written = time.ToString(fps, unit, zeroBasedCells);
    const Time again = written.ToTime(fps, unit, zeroBasedCells);
    (void)again.ToString(fps + 0.5, unit, zeroBasedCells);
    return 0;
}
