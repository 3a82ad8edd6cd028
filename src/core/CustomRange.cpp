// CustomRange.cpp - the list of a CustomRange: ownership, copies, counting, enumeration.
#include "fileio/core/CustomRange.h"

#include "fileio/memory/NamedPools.h"

#include "core/Rounding.h"

#include <algorithm>
#include <climits>
#include <cmath>

// ---- storage ----------------------------------------------------------------------------

void* CustomTimeRange::operator new(std::size_t size) {
    return AllocExt(size);
}

void CustomTimeRange::operator delete(void* p) noexcept {
    FreeExt(p);
}

void* CustomRange::operator new(std::size_t size) {
    return AllocExt(size);
}

void CustomRange::operator delete(void* p) noexcept {
    FreeExt(p);
}

// ---- ownership and copies -----------------------------------------------------------------

CustomRange::CustomRange(const CustomRange& other) {
    CopyItemsOf(other);
}

CustomRange::CustomRange(CustomRange&& other) {
    CopyItemsOf(other);
}

CustomRange& CustomRange::operator=(const CustomRange& other) {
    if (this != &other) {
        DeleteRangeList();
        CopyItemsOf(other);
    }
    return *this;
}

CustomRange& CustomRange::operator=(CustomRange&& other) {
    return *this = static_cast<const CustomRange&>(other);
}

CustomRange::~CustomRange() {
    DeleteRangeList();
}

void CustomRange::DeleteRangeList() noexcept {
    for (CustomTimeRange* item : m_items)
        delete item;
    m_items.clear();
}

void CustomRange::CopyItemsOf(const CustomRange& other) {
    m_items.reserve(m_items.size() + other.m_items.size());
    for (const CustomTimeRange* item : other.m_items)
        m_items.push_back(item != nullptr ? new CustomTimeRange(*item) : nullptr);
}

void CustomRange::AppendItem(Time start, Time end, int step) {
    m_items.push_back(new CustomTimeRange(start, end, step));
}

void CustomRange::Append(Time start, Time end, float step) {
    const float whole = std::trunc(step);
    // Compared in double: the int range's top is not a float.
    const bool fits =
        whole >= static_cast<double>(INT_MIN) && whole <= static_cast<double>(INT_MAX);
    AppendItem(start, end, fits ? static_cast<int>(whole) : 0);
}

void CustomRange::Set(Time start, Time end, float step) {
    DeleteRangeList();
    Append(start, end, step);
}

bool CustomRange::operator==(const CustomRange& other) const noexcept {
    return m_items == other.m_items;
}

// ---- frames -------------------------------------------------------------------------------

namespace {

/// The ticks between two enumerated times of an item: llrint(135000 / fps x step), or 0
/// when that is below 1 tick (or the rate is 0 or less) so that the item covers its start
/// alone.
long long StepTicks(const CustomTimeRange& item, int fps) noexcept {
    if (fps <= 0 || item.step <= 0)
        return 0;
    const double ticks =
        static_cast<double>(Time::TicksPerSecond) / fps * static_cast<double>(item.step);
    // At most 135000 x INT_MAX: always inside the tick range.
    return ticks >= 1.0 ? fileio::detail::RoundToNearestEven(ticks) : 0;
}

/// The number of times GetNextTime produces for an item.
unsigned long long PositionsOf(const CustomTimeRange& item, int fps) noexcept {
    if (item.end < item.start)
        return 0;
    const long long step = StepTicks(item, fps);
    if (step <= 0)
        return 1;
    const unsigned long long span = static_cast<unsigned long long>(item.end.GetTicks()) -
                                    static_cast<unsigned long long>(item.start.GetTicks());
    return span / static_cast<unsigned long long>(step) + 1;
}

int ClampToInt(double value) noexcept {
    if (std::isnan(value))
        return 0;
    return static_cast<int>(
        std::clamp(value, static_cast<double>(INT_MIN), static_cast<double>(INT_MAX)));
}

} // namespace

int CustomRange::GetTotalFrames(int fps) const noexcept {
    double total = 0.0;
    for (const CustomTimeRange* item : m_items) {
        if (item == nullptr)
            continue;
        // A step of 0 has no count by the rule below (a division by zero): it counts as
        // the start time alone, as it enumerates.
        if (item->step == 0) {
            total += item->end < item->start ? 0.0 : 1.0;
            continue;
        }
        const double seconds =
            item->end == item->start ? 0.0 : (item->end - item->start).GetSecondsDouble();
        const float frames = static_cast<float>(fps * seconds);
        total += std::trunc((frames + 1.0f) / static_cast<float>(item->step));
    }
    return ClampToInt(total);
}

bool CustomRange::GetNextTime(int fps, int& index, Time& time, int* total) const noexcept {
    // The int index cannot move past INT_MAX, so no position at or beyond it is produced.
    const bool searching = index >= 0 && index < INT_MAX;
    const auto wanted = static_cast<unsigned long long>(index);
    unsigned long long counted = 0;
    for (const CustomTimeRange* item : m_items) {
        if (item == nullptr)
            continue;
        const unsigned long long positions = PositionsOf(*item, fps);
        if (searching && wanted - counted < positions) {
            const unsigned long long offset = wanted - counted;
            const auto step = static_cast<unsigned long long>(StepTicks(*item, fps));
            time = item->start + Time(static_cast<long long>(offset * step));
            ++index;
            return true;
        }
        counted += std::min(positions, ULLONG_MAX - counted);
    }
    if (total != nullptr)
        *total = static_cast<int>(std::min<unsigned long long>(counted, INT_MAX));
    return false;
}
