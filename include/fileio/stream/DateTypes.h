// DateTypes.h - the two date and time-of-day values the suite's files carry.
//
// COleDateTime is a calendar date as a day count (a double: whole days since 30 December
// 1899, the fraction the time of day) with a validity status; CTime is a wall-clock time in
// seconds since 1 January 1970. Both are plain values with the member names and order of the
// framework types they stand for, so host code that reads their members compiles unchanged.
//
// Stream forms (see VarnStream):
//   COleDateTime  text: status " " date         binary: status (4 bytes), then date (8 bytes)
//   CTime         text: the seconds in decimal  binary: the low 32 bits of the seconds; a read
//                                                gives them back zero-extended, so a file time
//                                                is good from 1970 to 2106
#pragma once

struct COleDateTime {
    enum DateTimeStatus : int { error = -1, valid = 0, invalid = 1, null = 2 };

    /// Days since 30 December 1899; the fraction is the time of day.
    double m_dt = 0.0;
    DateTimeStatus m_status = valid;
};

class CTime {
public:
    CTime() = default;
    explicit CTime(long long seconds) : m_time(seconds) {}

    /// Seconds since 1 January 1970 (UTC).
    [[nodiscard]] long long GetTime() const { return m_time; }

private:
    long long m_time = 0;
};
