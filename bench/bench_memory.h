#pragma once
// Memory figures of this process for the benchmarks, from /proc/self/status.

#include <cstdio>
#include <cstring>

// A "Vm..." field of /proc/self/status in KiB, such as "VmRSS" (resident now) or
// "VmHWM" (resident at its peak); 0 when it can't be read.
inline long BenchStatusKiB(char const *field)
{
    std::FILE *status = std::fopen("/proc/self/status", "r");
    if (!status)
        return 0;
    std::size_t const length = std::strlen(field);
    char line[256];
    long kib = 0;
    while (std::fgets(line, sizeof line, status))
        if (std::strncmp(line, field, length) == 0 && line[length] == ':') {
            std::sscanf(line + length + 1, "%ld", &kib);
            break;
        }
    std::fclose(status);
    return kib;
}
