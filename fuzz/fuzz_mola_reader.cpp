// Arbitrary bytes as a MOLA elevation grid through trImage::ReadMOLA. A MOLA file is
// known by its length alone, and the lengths are megabytes, so the first byte picks a
// length (one of the grid sizes, one next to it, or the input's own) and the rest of
// the input fills the file from its start, the remainder reading as zeros.

#include "foundation/trMessages.h"
#include "images/trImage.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

void Check(bool ok)
{
    if (!ok)
        std::abort();
}

struct MemoryFile {
    int fd = memfd_create("ostrel_fuzz_mola", 0);
    std::string path = "/proc/self/fd/" + std::to_string(fd);
};

// The two smaller grid sizes, and their neighbours; the larger ones cost too much a run.
constexpr off_t kLengths[] = {2073600, 8294400, 2073599, 2073601, 8294398, 8294401};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    static MemoryFile file;
    static bool quiet = [] {
        trDoDlgBoxes = 0;
        return true;
    }();
    (void)quiet;
    if (size < 1)
        return 0;
    Check(file.fd >= 0);
    unsigned const pick = data[0] % 8;
    ++data;
    --size;
    off_t const length = pick < 6 ? kLengths[pick] : off_t(size);
    Check(ftruncate(file.fd, 0) == 0);
    Check(ftruncate(file.fd, length) == 0);
    size_t const body = size < size_t(length) ? size : size_t(length);
    Check(pwrite(file.fd, data, body, 0) == ssize_t(body));

    trImage image;
    long const ok = image.ReadMOLA(file.path.c_str());
    bool const known = length == 2073600 || length == 8294400;
    Check((ok != 0) == known);
    if (ok) {
        Check(image.Width() == 1440 && image.Height() == 720);
        Check(image.NumChannels() == 1 && image.BytesPerChannel() == 2 && image.IsSigned());
        // The first sample of the file is the top row's first pixel, big-endian.
        if (body >= 2) {
            std::int16_t v;
            std::memcpy(&v, image.PixelRaw(0, 719), 2);
            Check(v == std::int16_t(std::uint16_t((data[0] << 8) | data[1])));
        }
    } else {
        Check(image.Pixels() == nullptr);
    }
    return 0;
}
