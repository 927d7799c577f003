#pragma once
// Millisecond time stamps from a monotonic clock, for timing renders and reports.

#include <cstdint>

class trString;

enum trTimebase { trTimebaseMilliseconds = 1, trTimebaseSeconds = 2, trTimebaseMinutes = 3 };

class trSystemTime {
public:
    trSystemTime() = default;
    virtual ~trSystemTime() = default;

    // Sets this to now; 0 if the clock can't be read.
    void GetTheCurrentTime();
    void AddTime(long amount, trTimebase base);
    // other minus this, in milliseconds.
    long DeltaTime(trSystemTime const &other) const { return long(other.milliseconds - milliseconds); }
    void StartTiming() { GetTheCurrentTime(); }
    // Prints the label and the milliseconds since StartTiming, and returns them.
    long ReportElapsedTime(trString const &label) const;

    std::int64_t Milliseconds() const { return milliseconds; }

private:
    std::int64_t milliseconds = 0;
};

// The local time as text, "YYYY-MM-DD HH:MM:SS".
trString trTimestamp();
