#include "foundation/trColour.h"

#include <atomic>

namespace {
// Constant-initialised, so it needs no place in the load order. Atomic because
// colour management may swap it while shaders read parameters.
constinit std::atomic<trColourConverter const *> gColourConverter{nullptr};
} // namespace

trColourConverter::~trColourConverter() = default;

void trSetColourConverter(trColourConverter const *converter)
{
    gColourConverter.store(converter, std::memory_order_release);
}

trColourConverter const *trGetColourConverter()
{
    return gColourConverter.load(std::memory_order_acquire);
}
