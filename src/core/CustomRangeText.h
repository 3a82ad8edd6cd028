// CustomRangeText.h - the text rules of a CustomRange, shared by the list and its tests.
#pragma once

#include "fileio/core/Time.h"

#include <string>
#include <string_view>

namespace fileio::detail {

/// Turns free text into comma-separated items: "1 - 10 s 2; 15 20" gives "1-10s2,15,20".
/// Digits and ":" are copied; "s"/"S" is copied as a step mark after a span's end; "-" after
/// a number that has no "-" yet starts the span's end; a blank after a number separates it
/// from a following number, but a pending blank is used up by the next copied character
/// whether or not that made a ","; any other character after a number ends the item (a bare
/// step mark gets the step "1" first) and is dropped; characters that do not follow a
/// number are dropped. One trailing "," is removed.
std::string NormaliseRangeText(std::string_view text);

/// The whole frames of a step time at fps: the time's frame count to the nearest tick,
/// truncated toward zero, so a whole number of frames read at any rate stays whole. Counts
/// outside the int range (and a rate of 0 or less) give 0.
int StepFramesOf(Time step, int fps) noexcept;

} // namespace fileio::detail
