#include "foundation/trCores.h"

#include "foundation/trMessages.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace {

struct Detection {
    int count = 1;
    bool ok = false;
};

// Logical processors this process may run on: the affinity mask, which honours
// taskset and container limits; the online count when the mask can't be read.
Detection Detect()
{
    Detection d;
    cpu_set_t set;
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof(set), &set) == 0) {
        d.count = CPU_COUNT(&set);
        d.ok = true;
        return d;
    }
    char text[96];
    std::snprintf(text, sizeof(text), "Failure while detecting logical processors: Error code %d", errno);
    trOutWarning(text);
    long online = sysconf(_SC_NPROCESSORS_ONLN);
    d.count = online > 0 ? int(online) : 1;
    d.ok = true; // the fall-back is a valid answer
    return d;
}

Detection const &Detected()
{
    static Detection const detection = Detect();
    return detection;
}

bool preferredOn = false;
int preferredCount = 0;
bool overrideOn = false;
int overrideCount = 0;

} // namespace

int trDetectedNumCores()
{
    return Detected().count;
}

int trDetectedNumCores(bool &ok)
{
    ok = Detected().ok;
    return Detected().count;
}

int trNumCoresToUse()
{
    bool ok;
    return trNumCoresToUse(ok);
}

int trNumCoresToUse(bool &ok)
{
    if (overrideOn) {
        ok = true;
        return overrideCount;
    }
    if (preferredOn) {
        ok = true;
        return preferredCount;
    }
    return trDetectedNumCores(ok);
}

void trSetPreferredNumCores(bool on, int count)
{
    preferredOn = on;
    preferredCount = count;
}

void trSetFinalOverrideNumCores(bool on, int count)
{
    overrideOn = on;
    overrideCount = count;
}

int trMaxThreads()
{
    return std::max(256, 16 * trDetectedNumCores());
}
