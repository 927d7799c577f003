#include "foundation/trSystemTime.h"

#include "foundation/trMessages.h"
#include "foundation/trString.h"

#include <ctime>
#include <cstdio>

void trSystemTime::GetTheCurrentTime()
{
    timespec now;
    if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) {
        milliseconds = 0;
        return;
    }
    milliseconds = std::int64_t(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

void trSystemTime::AddTime(long amount, trTimebase base)
{
    switch (base) {
    case trTimebaseMilliseconds: milliseconds += amount; break;
    case trTimebaseSeconds: milliseconds += std::int64_t(amount) * 1000; break;
    case trTimebaseMinutes: milliseconds += std::int64_t(amount) * 60000; break;
    default: break;
    }
}

long trSystemTime::ReportElapsedTime(trString const &label) const
{
    trSystemTime now;
    now.GetTheCurrentTime();
    long elapsed = DeltaTime(now);
    char text[64];
    std::snprintf(text, sizeof(text), " %ld ms", elapsed);
    trOutMsg(label + text);
    return elapsed;
}

trString trTimestamp()
{
    std::time_t now = std::time(nullptr);
    std::tm local;
    char text[32] = "";
    if (localtime_r(&now, &local))
        std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &local);
    return trString(text);
}
