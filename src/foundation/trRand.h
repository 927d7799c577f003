#pragma once
// Mersenne Twister MT19937 with the 1998 seeding, and the small random source built on it.
// The 1998 seeding (not the standard library's) is what every stored seed in a project
// was made with, so it must stay bit for bit.

#include <cstdint>

class trMersenneTwister {
public:
    static constexpr int N = 624;

    trMersenneTwister() = default;

    // Fills the state by the two-step 69069 recurrence, high 16 bits of each step.
    void sgenrand(unsigned long seed);
    // Copies a whole state of N words.
    void lsgenrand(unsigned long const *state);
    // Next tempered 32-bit word; an unseeded generator seeds itself with 4357 first.
    unsigned long genrand()
    {
        if (index >= N)
            Regenerate();
        std::uint32_t y = state[index++];
        y ^= y >> 11;
        y ^= (y << 7) & 0x9d2c5680u;
        y ^= (y << 15) & 0xefc60000u;
        y ^= y >> 18;
        return y;
    }
    bool IsSeeded() const { return index != N + 1; }

private:
    void Regenerate();

    std::uint32_t state[N] = {};
    int index = N + 1; // N + 1 marks a generator that has never been seeded
};

class trRand {
public:
    trRand() = default;
    explicit trRand(unsigned long seed) { twister.sgenrand(seed); }

    void Seed(unsigned long seed) { twister.sgenrand(seed); }
    unsigned long Int() { return twister.genrand(); }
    // 0 to 1 inclusive.
    double Double() { return double(twister.genrand()) / 4294967295.0; }
    float Float() { return float(twister.genrand()) * 2.3283064e-10f; }

    trMersenneTwister &Generator() { return twister; }

private:
    trMersenneTwister twister;
};

// The process-wide source. Not thread-safe: render threads keep their own trRand.
// Left unseeded, so that it seeds itself on the first draw.
extern trRand trGlobalRand;
