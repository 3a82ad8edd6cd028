// StreamBOOL.h - a Windows-style BOOL streamed in the bool form.
//
// The suite keeps many of its flags as BOOL (an int holding 0 or anything else for true).
// Streamed as an int such a flag would take four bytes; wrapped in StreamBOOL it is written
// and read exactly as a bool: "TRUE" or "FALSE" in text, one byte 0 or 1 in binary.
//
//     stream << StreamBOOL(model.active);          // writes the flag
//     StreamBOOL active; stream >> active;         // reads it back: 0 or 1
//     model.active = active;
#pragma once

struct StreamBOOL {
    /// The flag: 0 is false, any other value true. A read stores 0 or 1.
    int value = 0;

    StreamBOOL() = default;
    StreamBOOL(int flag) : value(flag) {}
    operator int() const { return value; }
};
