// Arbitrary bytes as an SGI file through trImage::ReadSGI. The reader takes a file
// name, so the bytes go into an in-memory file reached through /proc. Properties
// checked: a success gives a consistent layout of one to three channels of one or two
// bytes; a failure leaves the image empty.

#include "foundation/trMessages.h"
#include "images/trImage.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
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
    int fd = memfd_create("ostrel_fuzz_sgi", 0);
    std::string path = "/proc/self/fd/" + std::to_string(fd);
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    static MemoryFile file;
    static bool quiet = [] {
        trDoDlgBoxes = 0;
        return true;
    }();
    (void)quiet;
    Check(file.fd >= 0);
    Check(ftruncate(file.fd, 0) == 0);
    Check(pwrite(file.fd, data, size, 0) == ssize_t(size));

    trImage image;
    long const ok = image.ReadSGI(file.path.c_str());
    if (ok) {
        Check(image.Pixels() != nullptr);
        Check(image.Width() > 0 && image.Height() > 0);
        Check(image.NumChannels() >= 1 && image.NumChannels() <= 3);
        Check(image.BytesPerChannel() == 1 || image.BytesPerChannel() == 2);
        // Touch every byte, so that the sanitizer sees any read of memory never written.
        unsigned sum = 0;
        for (std::int64_t i = 0; i < image.NumBytes(); ++i)
            sum += image.Pixels()[i];
        Check(sum != 0xffffffffu);
    } else {
        Check(image.Pixels() == nullptr && image.Width() == 0);
    }
    return 0;
}
