#include "foundation/trRand.h"

namespace {
constexpr int M = 397;
constexpr std::uint32_t kMatrixA = 0x9908b0dfu;
constexpr std::uint32_t kUpperMask = 0x80000000u;
constexpr std::uint32_t kLowerMask = 0x7fffffffu;
} // namespace

void trMersenneTwister::sgenrand(unsigned long seed)
{
    // The recurrence is defined on 32-bit words; long is wider here, so keep 32 bits.
    std::uint32_t s = std::uint32_t(seed);
    for (int i = 0; i < N; ++i) {
        state[i] = s & 0xffff0000u;
        s = 69069u * s + 1u;
        state[i] |= (s & 0xffff0000u) >> 16;
        s = 69069u * s + 1u;
    }
    index = N;
}

void trMersenneTwister::lsgenrand(unsigned long const *words)
{
    for (int i = 0; i < N; ++i)
        state[i] = std::uint32_t(words[i]);
    index = N;
}

void trMersenneTwister::Regenerate()
{
    if (index == N + 1)
        sgenrand(4357);
    static constexpr std::uint32_t mag01[2] = {0u, kMatrixA};
    int k = 0;
    for (; k < N - M; ++k) {
        std::uint32_t y = (state[k] & kUpperMask) | (state[k + 1] & kLowerMask);
        state[k] = state[k + M] ^ (y >> 1) ^ mag01[y & 1u];
    }
    for (; k < N - 1; ++k) {
        std::uint32_t y = (state[k] & kUpperMask) | (state[k + 1] & kLowerMask);
        state[k] = state[k + (M - N)] ^ (y >> 1) ^ mag01[y & 1u];
    }
    std::uint32_t y = (state[N - 1] & kUpperMask) | (state[0] & kLowerMask);
    state[N - 1] = state[M - 1] ^ (y >> 1) ^ mag01[y & 1u];
    index = 0;
}
