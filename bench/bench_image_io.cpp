// Image files: a 4096 x 2048 float frame written and read as EXR (half, ZIP) and as SGI
// (its bytes, uncompressed), by this library and, side by side, by OpenEXR and FreeImage
// called directly on the same data and files. "bytes_per_second" counts the frame in
// memory: 96 MiB of floats for EXR, 24 MiB of bytes for SGI. Ostrel's EXR writer is the
// image writer plug-in, loaded from the build tree; its reader is FreeImage through
// ReadFile, so the read rows show what the library adds around it.

#include "images/trImage.h"
#include "nodes/trClassPool.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

#ifdef OSTREL_HAVE_OPENEXR
#include <Imath/half.h>
#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfInputFile.h>
#include <OpenEXR/ImfOutputFile.h>
#endif
#ifdef OSTREL_HAVE_FREEIMAGE
#include <FreeImage.h>
#endif

namespace {

constexpr int kW = 4096;
constexpr int kH = 2048;

// A frame with smooth gradients and fine detail, so that compression has real work.
trFImage &Frame()
{
    static trFImage f;
    static bool const made = [] {
        f.Init(0, 0, kW, kH);
        for (int y = 0; y < kH; ++y)
            for (int x = 0; x < kW; ++x) {
                float const fine = 0.05f * std::sin(0.37f * float(x)) * std::cos(0.23f * float(y));
                *f.FPixelRaw(x, y) = trFCol{float(x) / kW + fine, float(y) / kH, 0.5f + fine * 3.0f};
            }
        return true;
    }();
    (void)made;
    return f;
}

trBImage &ByteFrame()
{
    static trBImage b;
    static bool const made = [] {
        b.Init(0, 0, kW, kH);
        for (int y = 0; y < kH; ++y)
            for (int x = 0; x < kW; ++x) {
                trFCol const c = *Frame().FPixelRaw(x, y);
                auto q = [](float v) { return static_cast<unsigned char>(v <= 0.f ? 0 : v >= 1.f ? 255 : v * 255.f); };
                *b.BPixelRaw(x, y) = trBCol{q(c.r), q(c.g), q(c.b)};
            }
        return true;
    }();
    (void)made;
    return b;
}

// Files live in one scratch folder, removed at exit.
struct Scratch {
    std::filesystem::path dir = std::filesystem::temp_directory_path() /
                                ("ostrel_bench_image_io_" + std::to_string(getpid()));
    Scratch() { std::filesystem::create_directories(dir); }
    ~Scratch()
    {
        std::error_code ec;
        std::filesystem::remove_all(dir, ec);
    }
    std::string File(char const *name) const { return (dir / name).string(); }
};

Scratch &Files()
{
    static Scratch scratch;
    return scratch;
}

// The library posts a line for every read and write: keep them off the report.
class QuietStdout {
public:
    QuietStdout()
    {
        std::fflush(stdout);
        saved = dup(1);
        std::FILE *null = std::fopen("/dev/null", "w");
        if (null) {
            dup2(fileno(null), 1);
            std::fclose(null);
        }
    }
    ~QuietStdout()
    {
        std::fflush(stdout);
        if (saved >= 0) {
            dup2(saved, 1);
            close(saved);
        }
    }
    QuietStdout(QuietStdout const &) = delete;
    QuietStdout &operator=(QuietStdout const &) = delete;

private:
    int saved = -1;
};

bool LoadWriters()
{
#ifdef OSTREL_IMAGE_WRITER_PLUGIN_DIR
    static bool const loaded = [] {
        QuietStdout quiet;
        long id = -1;
        if (trClasses.FindClassIdFromClassName(id, "image_writer_exr"))
            return true;
        return trClasses.LoadPlugin(OSTREL_IMAGE_WRITER_PLUGIN_DIR "image_writers.svp",
                                    OSTREL_IMAGE_WRITER_PLUGIN_DIR) != 0;
    }();
    return loaded;
#else
    return false;
#endif
}

std::int64_t const kFloatBytes = std::int64_t(kW) * kH * 12;
std::int64_t const kByteBytes = std::int64_t(kW) * kH * 3;

// The EXR file every reader reads, written once by Ostrel.
std::string const &ExrFile()
{
    static std::string const path = [] {
        std::string p = Files().File("frame.exr");
        if (LoadWriters()) {
            QuietStdout quiet;
            Frame().WriteEXR(p.c_str());
        }
        return p;
    }();
    return path;
}

std::string const &SgiFile()
{
    static std::string const path = [] {
        std::string p = Files().File("frame.sgi");
        QuietStdout quiet;
        ByteFrame().WriteSGIRGB(p.c_str());
        return p;
    }();
    return path;
}

void BM_ExrWrite_Ostrel(benchmark::State &state)
{
    if (!LoadWriters()) {
        state.SkipWithError("image writer plug-in not built");
        return;
    }
    trFImage &frame = Frame();
    std::string const path = Files().File("ostrel_write.exr");
    QuietStdout quiet;
    for (auto _ : state)
        benchmark::DoNotOptimize(frame.WriteEXR(path.c_str()));
    state.SetBytesProcessed(state.iterations() * kFloatBytes);
}
BENCHMARK(BM_ExrWrite_Ostrel)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ExrRead_Ostrel(benchmark::State &state)
{
    std::string const &path = ExrFile();
    QuietStdout quiet;
    for (auto _ : state) {
        trImage image;
        benchmark::DoNotOptimize(image.ReadFile(path.c_str()));
    }
    state.SetBytesProcessed(state.iterations() * kFloatBytes);
}
BENCHMARK(BM_ExrRead_Ostrel)->Unit(benchmark::kMillisecond)->UseRealTime();

#ifdef OSTREL_HAVE_OPENEXR
// The same header and compression as the plug-in's: half RGB, ZIP, top row first. The
// file takes halves only, so the frame is converted first, as the plug-in must.
void BM_ExrWrite_OpenEXR(benchmark::State &state)
{
    trFImage &frame = Frame();
    std::string const path = Files().File("openexr_write.exr");
    std::vector<Imath::half> halves(std::size_t(kW) * kH * 3);
    for (auto _ : state) {
        for (int y = 0; y < kH; ++y) {
            float const *in = &frame.FScanlineRaw(kH - 1 - y)->r;
            Imath::half *out = halves.data() + std::size_t(y) * kW * 3;
            for (int i = 0; i < kW * 3; ++i)
                out[i] = Imath::half(in[i]);
        }
        Imf::Header header(kW, kH);
        Imf::FrameBuffer fb;
        char const *names[3] = {"R", "G", "B"};
        for (int c = 0; c < 3; ++c) {
            header.channels().insert(names[c], Imf::Channel(Imf::HALF));
            fb.insert(names[c], Imf::Slice(Imf::HALF, reinterpret_cast<char *>(halves.data() + c), 6,
                                           6 * std::size_t(kW)));
        }
        Imf::OutputFile file(path.c_str(), header);
        file.setFrameBuffer(fb);
        file.writePixels(kH);
    }
    state.SetBytesProcessed(state.iterations() * kFloatBytes);
}
BENCHMARK(BM_ExrWrite_OpenEXR)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ExrRead_OpenEXR(benchmark::State &state)
{
    std::string const &path = ExrFile();
    std::vector<float> rgb(std::size_t(kW) * kH * 3);
    for (auto _ : state) {
        Imf::InputFile file(path.c_str());
        Imath::Box2i const dw = file.header().dataWindow();
        Imf::FrameBuffer fb;
        char const *names[3] = {"R", "G", "B"};
        for (int c = 0; c < 3; ++c)
            fb.insert(names[c], Imf::Slice(Imf::FLOAT, reinterpret_cast<char *>(rgb.data() + c), 12,
                                           12 * std::size_t(kW)));
        file.setFrameBuffer(fb);
        file.readPixels(dw.min.y, dw.max.y);
        benchmark::DoNotOptimize(rgb.data());
    }
    state.SetBytesProcessed(state.iterations() * kFloatBytes);
}
BENCHMARK(BM_ExrRead_OpenEXR)->Unit(benchmark::kMillisecond)->UseRealTime();
#endif

#ifdef OSTREL_HAVE_FREEIMAGE
FIBITMAP *FloatBitmap()
{
    FIBITMAP *bitmap = FreeImage_AllocateT(FIT_RGBF, kW, kH);
    for (int y = 0; y < kH; ++y)
        std::memcpy(FreeImage_GetScanLine(bitmap, y), Frame().FScanlineRaw(y), std::size_t(kW) * 12);
    return bitmap;
}

void BM_ExrWrite_FreeImage(benchmark::State &state)
{
    FIBITMAP *bitmap = FloatBitmap();
    std::string const path = Files().File("freeimage_write.exr");
    for (auto _ : state)
        benchmark::DoNotOptimize(FreeImage_Save(FIF_EXR, bitmap, path.c_str(), EXR_ZIP));
    FreeImage_Unload(bitmap);
    state.SetBytesProcessed(state.iterations() * kFloatBytes);
}
BENCHMARK(BM_ExrWrite_FreeImage)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ExrRead_FreeImage(benchmark::State &state)
{
    std::string const &path = ExrFile();
    for (auto _ : state) {
        FIBITMAP *bitmap = FreeImage_Load(FIF_EXR, path.c_str(), 0);
        benchmark::DoNotOptimize(bitmap);
        FreeImage_Unload(bitmap);
    }
    state.SetBytesProcessed(state.iterations() * kFloatBytes);
}
BENCHMARK(BM_ExrRead_FreeImage)->Unit(benchmark::kMillisecond)->UseRealTime();
#endif

void BM_SgiWrite_Ostrel(benchmark::State &state)
{
    trBImage &bytes = ByteFrame();
    std::string const path = Files().File("ostrel_write.sgi");
    QuietStdout quiet;
    for (auto _ : state)
        benchmark::DoNotOptimize(bytes.WriteSGIRGB(path.c_str()));
    state.SetBytesProcessed(state.iterations() * kByteBytes);
}
BENCHMARK(BM_SgiWrite_Ostrel)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_SgiRead_Ostrel(benchmark::State &state)
{
    std::string const &path = SgiFile();
    QuietStdout quiet;
    for (auto _ : state) {
        trImage image;
        benchmark::DoNotOptimize(image.ReadSGI(path.c_str()));
    }
    state.SetBytesProcessed(state.iterations() * kByteBytes);
}
BENCHMARK(BM_SgiRead_Ostrel)->Unit(benchmark::kMillisecond)->UseRealTime();

#ifdef OSTREL_HAVE_FREEIMAGE
// FreeImage reads SGI but does not write it.
void BM_SgiRead_FreeImage(benchmark::State &state)
{
    std::string const &path = SgiFile();
    for (auto _ : state) {
        FIBITMAP *bitmap = FreeImage_Load(FIF_SGI, path.c_str(), 0);
        benchmark::DoNotOptimize(bitmap);
        FreeImage_Unload(bitmap);
    }
    state.SetBytesProcessed(state.iterations() * kByteBytes);
}
BENCHMARK(BM_SgiRead_FreeImage)->Unit(benchmark::kMillisecond)->UseRealTime();
#endif

} // namespace
