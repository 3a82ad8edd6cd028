// range_parser.cpp - CustomRange::Set over arbitrary bytes, at several rates and in every
// unit.
//
// The first byte picks the rate and the unit; the rest (at most 4096 bytes) is the text.
// The list read is written back, read again, counted and enumerated (up to a bound): no
// input may crash, hang, leak or read outside the text, and a copy is never equal to its
// non-empty source.
#include "FuzzSupport.h"
#include "fileio/core/CustomRange.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t maxText = 4096;
    if (size == 0 || size > maxText + 1)
        return 0;
    static const int rates[] = {24, 25, 30, 60, 7, 48, 100, 1000, 0, -30, 300000, 1};
    const std::uint8_t selector = data[0];
    const int fps = rates[selector % (sizeof rates / sizeof rates[0])];
    const auto unit = static_cast<TimeUnit>((selector / 16) % 4); // 3 is no unit

    const String text(reinterpret_cast<const char*>(data + 1), static_cast<int>(size - 1));
    CustomRange range;
    range.Set(text, fps, unit);
    const String written = range.ToString(fps, unit, (selector & 0x80) != 0);

    CustomRange again;
    again.Set(written, fps, unit);
    (void)again.GetTotalFrames(fps);

    int index = 0;
    Time time;
    int total = 0;
    for (int calls = 0; calls < 1000 && range.GetNextTime(fps, index, time, &total); ++calls) {
    }
    index = -1;
    (void)range.GetNextTime(fps, index, time, &total);

    const CustomRange copy(range);
    fuzz::Require(range.IsEmpty() || !(copy == range));
    return 0;
}
