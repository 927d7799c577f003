#pragma once
// Identities of traced rays, one counter per thread. Each thread's counter starts
// 65,536 apart from the next, so that the identities of different threads don't
// meet for 65,535 rays; accelerators use them for mailboxing.

#include <cstdint>

class trRayIdentities {
public:
    static constexpr unsigned kNumEntries = 256;

    trRayIdentities()
    {
        for (unsigned i = 0; i < kNumEntries; ++i)
            ids[i] = (std::uint32_t(i) << 16) + 1;
    }
    // Threads past the table share an entry with a lower one rather than write past it.
    std::uint32_t &operator[](unsigned thread) { return ids[thread & (kNumEntries - 1)]; }

private:
    std::uint32_t ids[kNumEntries];
};

extern trRayIdentities trRayId;
