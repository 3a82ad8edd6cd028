// CustomRange.h - an ordered list of time ranges typed as free text.
//
// A CustomRange holds single frames, spans, and spans taken every n-th frame, in the order
// the user typed them: in FRAMES the text "1-10, 15, 20-40 s2" gives four items, the last
// of which takes every second frame. The text may be typed in any TimeUnit (SMPTE, FRAMES,
// CELLS); the list writes it back canonically ("1-10,15,20-40 s2"), counts the frames it
// covers and enumerates them one by one.
//
// Items are CustomTimeRange objects owned by the list, each allocated on its own from the
// "Ext" pool; CustomRange objects made with new live in the same pool.
//
// Equality is by item identity, not by value: two lists are equal when they hold the very
// same item objects in the same order. A copy of a non-empty list is never equal to its
// source; two empty lists are equal.
//
// Thread safety: a plain value; one thread at a time.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"
#include "fileio/core/Time.h"

#include <cstddef>
#include <vector>

/// One item of a CustomRange: the times from start to end, every step-th frame. A single
/// frame has start equal to end and step 1.
class FILEIO_API CustomTimeRange {
public:
    CustomTimeRange() noexcept = default;
    CustomTimeRange(Time first, Time last, int frameStep) noexcept
        : start(first), end(last), step(frameStep) {}

    /// Items made with new live in the "Ext" pool.
    static void* operator new(std::size_t size);
    static void operator delete(void* p) noexcept;

    Time start;
    Time end;
    int step = 1; ///< a frame count
};

class FILEIO_API CustomRange {
public:
    /// An empty list with no kept text.
    CustomRange() noexcept = default;
    /// A deep copy of other's items, in order; the kept text is not copied.
    CustomRange(const CustomRange& other);
    /// Copies, as the copy constructor does, and leaves `other` as it was.
    CustomRange(CustomRange&& other);
    /// Frees the own items, then deep-copies other's; the kept text stays as it was.
    /// Assigning a list to itself changes nothing.
    CustomRange& operator=(const CustomRange& other);
    CustomRange& operator=(CustomRange&& other);
    /// Frees every item and the kept text.
    ~CustomRange();

    /// CustomRange objects made with new live in the "Ext" pool.
    static void* operator new(std::size_t size);
    static void operator delete(void* p) noexcept;

    // ---- the list -----------------------------------------------------------------------

    /// Frees every item; the list is empty afterwards.
    void DeleteRangeList() noexcept;
    [[nodiscard]] bool IsEmpty() const noexcept { return m_items.empty(); }
    /// The number of items.
    [[nodiscard]] int GetCount() const noexcept { return static_cast<int>(m_items.size()); }
    /// The items in order; they stay owned by the list.
    [[nodiscard]] const std::vector<CustomTimeRange*>& GetItems() const noexcept { return m_items; }

    /// Adds an item at the tail with the step truncated toward zero (a step outside the
    /// int range, or NaN, gives 0).
    void Append(Time start, Time end, float step);
    /// Replaces the list by the one item.
    void Set(Time start, Time end, float step);

    // ---- text ---------------------------------------------------------------------------

    /// Replaces the list by the ranges typed in text, read in unit at fps. The text is first
    /// normalised into comma-separated items: digits and ":" make numbers, "-" after a
    /// number makes a span, "s" or "S" after a span's end marks its step (a bare mark means
    /// step 1), blanks between two numbers separate items while blanks around a "-" or a
    /// step mark do not, and any other character (",", ";", a letter) ends the item and is
    /// dropped. So "1 - 10 s 2; 15 20" reads as "1-10s2,15,20". Then each item is read:
    /// numbers through String::ToTime(fps, unit, false); a step as a frame count in the
    /// unit with cells counted from 0, the whole frames of its time (a whole number of
    /// frames written at any rate reads back whole). A span without an end ("1-"), or with
    /// a step mark followed by nothing at the end of the text, adds nothing. Text that
    /// cannot be read yields fewer items, never an error. A "-" in front of a number is
    /// not read as a sign, so negative times cannot be typed.
    void Set(const String& text, int fps, TimeUnit unit);

    /// The canonical text: each single frame as its time, each span as "start-end", and
    /// " s" with the step (a frame count written in the unit, cells from 0) after a span
    /// whose step is not 1; items are joined by "," or, with multiline, ",\r\n". Times are
    /// written by Time::ToString(fps, unit, false). In FRAMES at 24 fps the list read from
    /// "1-10, 15, 20-40 s2" is written "1-10,15,20-40 s2".
    /// The text is kept; when the kept text is not empty and fps is 0 and unit SMPTE, the
    /// kept text is returned unchanged instead of being rebuilt.
    /// Every text written here reads back by Set to the same items, for times that are
    /// whole frames from 0 up to 99999 frames and steps of 1 up to 99999 frames, at any
    /// whole rate; in SMPTE both must also lie below 100 minutes.
    [[nodiscard]] String ToString(int fps, TimeUnit unit, bool multiline);

    // ---- frames -------------------------------------------------------------------------

    /// The number of frames counted over all items: each item contributes
    /// trunc((fps x (end - start in seconds) + 1) / step), worked in float, signed and
    /// unclamped, so a reversed item "10-1" counts -8. For a span whose step is above 1
    /// this can be one less than GetNextTime produces (0 to 10 frames by 2 counts 5,
    /// enumerates 6); both are kept so. A negative step follows the same signed rule ({0, 0,
    /// step -1} counts -1); a step of 0 counts as the start time alone (1, or 0 when the
    /// item is reversed). The sum is clamped to the int range.
    [[nodiscard]] int GetTotalFrames(int fps) const noexcept;

    /// Enumerates the covered times: positions run over the items in order, and within an
    /// item over start, start + d, start + 2d ... while not past end, with d =
    /// llrint(135000 / fps x step) ticks. At the position equal to index, time receives
    /// that time, index is incremented and the result is true. When index lies beyond the
    /// last position (or is negative) the result is false and, when total is not null,
    /// *total receives the number of positions (clamped to the int range). Callers start
    /// with index 0 and call until false. A reversed item covers nothing. An item whose
    /// step is 0 or less, or whose d comes out below 1 tick (a rate of 0 or less, or one
    /// so high that a frame rounds to no tick), covers only its start time, so no list
    /// makes a caller loop for ever.
    bool GetNextTime(int fps, int& index, Time& time, int* total) const noexcept;

    // ---- identity ---------------------------------------------------------------------------

    /// The same number of items and, position by position, the very same item objects.
    [[nodiscard]] bool operator==(const CustomRange& other) const noexcept;
    [[nodiscard]] bool operator!=(const CustomRange& other) const noexcept {
        return !(*this == other);
    }

private:
    /// Adds an item with an already whole step at the tail.
    void AppendItem(Time start, Time end, int step);
    /// Appends new copies of other's items.
    void CopyItemsOf(const CustomRange& other);

    std::vector<CustomTimeRange*> m_items;
    String m_text; ///< the text last built by ToString
};
