// All FreeImage use of the library: reading into pixel stores, the format list, and
// the bitmap helpers behind the asset library's previews.
#include "images/trFreeImageAdapter.h"

#include <FreeImage.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "foundation/trMessages.h"
#include "foundation/trString.h"
#include "images/trImage.h"

namespace trFreeImageAdapter {

namespace {

std::atomic<long long> g_maxPixels{1LL << 28};

void DLL_CALLCONV OutputHandler(FREE_IMAGE_FORMAT, char const *message)
{
    if (message) {
        std::fputs("FreeImage error: ", stdout);
        std::fputs(message, stdout);
        std::fputc('\n', stdout);
        std::fflush(stdout);
    }
}

// FreeImage only ever sees an open stream, never a path: its own messages copy a
// path into a fixed buffer, which a long name would overrun.
unsigned DLL_CALLCONV ReadProc(void *buffer, unsigned size, unsigned count, fi_handle handle)
{
    return unsigned(std::fread(buffer, size, count, static_cast<FILE *>(handle)));
}

unsigned DLL_CALLCONV WriteProc(void *buffer, unsigned size, unsigned count, fi_handle handle)
{
    return unsigned(std::fwrite(buffer, size, count, static_cast<FILE *>(handle)));
}

int DLL_CALLCONV SeekProc(fi_handle handle, long offset, int origin)
{
    return std::fseek(static_cast<FILE *>(handle), offset, origin);
}

long DLL_CALLCONV TellProc(fi_handle handle)
{
    return std::ftell(static_cast<FILE *>(handle));
}

FreeImageIO *StdioIO()
{
    static FreeImageIO io = {ReadProc, WriteProc, SeekProc, TellProc};
    return &io;
}

// Closes a file when it leaves scope.
struct File {
    FILE *f = nullptr;
    File(char const *path, char const *mode) : f(path && *path ? std::fopen(path, mode) : nullptr) {}
    ~File()
    {
        if (f)
            std::fclose(f);
    }
    File(File const &) = delete;
    File &operator=(File const &) = delete;
};

// The format by content, else by name; FIF_UNKNOWN when neither tells or FreeImage
// can't read it.
FREE_IMAGE_FORMAT FormatOf(File &file, char const *path)
{
    if (!file.f)
        return FIF_UNKNOWN;
    FREE_IMAGE_FORMAT fif = FreeImage_GetFileTypeFromHandle(StdioIO(), file.f, 0);
    if (fif == FIF_UNKNOWN)
        fif = FreeImage_GetFIFFromFilename(path);
    if (fif == FIF_UNKNOWN || !FreeImage_FIFSupportsReading(fif))
        return FIF_UNKNOWN;
    return fif;
}

FIBITMAP *LoadFrom(File &file, FREE_IMAGE_FORMAT fif, int flags)
{
    if (!file.f || std::fseek(file.f, 0, SEEK_SET) != 0)
        return nullptr;
    return FreeImage_LoadFromHandle(fif, StdioIO(), file.f, flags);
}

// Byte sources for the header walks: an open file, or bytes in memory.
struct FileReader {
    FILE *f;
    int Get() { return std::fgetc(f); }
    bool Read(unsigned char *out, long n) { return std::fread(out, 1, std::size_t(n), f) == std::size_t(n); }
    bool Skip(long n) { return std::fseek(f, n, SEEK_CUR) == 0; }
    void Rewind() { std::fseek(f, 0, SEEK_SET); }
};

struct MemoryReader {
    unsigned char const *p;
    long size;
    long at = 0;
    int Get() { return at < size ? p[at++] : EOF; }
    bool Read(unsigned char *out, long n)
    {
        if (n > size - at)
            return false;
        std::memcpy(out, p + at, std::size_t(n));
        at += n;
        return true;
    }
    bool Skip(long n)
    {
        if (n > size - at)
            return false;
        at += n;
        return true;
    }
    void Rewind() { at = 0; }
};

// GIF frames carry their own sizes, which the decoder allocates whatever the screen
// size says: walk the blocks and check every frame.
template <typename Reader>
bool GifFrameTooLarge(Reader &in)
{
    unsigned char header[13];
    if (!in.Read(header, 13))
        return false;
    auto skipTable = [&in](unsigned char packed) { return !(packed & 0x80) || in.Skip(3L << ((packed & 7) + 1)); };
    auto skipSubBlocks = [&in]() {
        for (;;) {
            int length = in.Get();
            if (length <= 0)
                return length == 0;
            if (!in.Skip(length))
                return false;
        }
    };
    if (!skipTable(header[10]))
        return false;
    for (;;) {
        int block = in.Get();
        if (block == 0x21) {
            if (in.Get() == EOF || !skipSubBlocks())
                return false;
        } else if (block == 0x2c) {
            unsigned char d[9];
            if (!in.Read(d, 9))
                return false;
            long long w = d[4] | (d[5] << 8), h = d[6] | (d[7] << 8);
            if (w * h > MaxPixels())
                return true;
            if (!skipTable(d[8]) || in.Get() == EOF || !skipSubBlocks())
                return false;
        } else {
            return false;
        }
    }
}

// Icon files hold bitmaps whose own headers give their sizes, whatever the directory
// says: check the header of every entry (an embedded PNG or a bitmap info header). An
// entry with no readable or a malformed header counts as unsafe, refusing the file.
template <typename Reader>
bool IconUnsafe(Reader &in, long fileSize)
{
    // A directory cut short leaves the decoder reading sizes from bytes that aren't
    // there: refuse it.
    unsigned char dir[6];
    if (!in.Read(dir, 6))
        return true;
    int count = dir[4] | (dir[5] << 8);
    std::vector<long> offsets;
    for (int i = 0; i < count; ++i) {
        unsigned char e[16];
        if (!in.Read(e, 16))
            return true;
        long offset = long(e[12]) | (long(e[13]) << 8) | (long(e[14]) << 16) | (long(e[15]) << 24);
        // An entry pointing outside the file would be decoded from stale bytes.
        if (offset < 6 || offset >= fileSize)
            return true;
        offsets.push_back(offset);
    }
    for (long offset : offsets) {
        in.Rewind();
        unsigned char h[24];
        if (!in.Skip(offset) || !in.Read(h, 24))
            return true;
        long long w, ht;
        if (h[0] == 0x89 && h[1] == 'P') {
            w = (long long)((unsigned(h[16]) << 24) | (unsigned(h[17]) << 16) | (unsigned(h[18]) << 8) | h[19]);
            ht = (long long)((unsigned(h[20]) << 24) | (unsigned(h[21]) << 16) | (unsigned(h[22]) << 8) | h[23]);
        } else {
            std::int32_t wi, hi;
            std::memcpy(&wi, h + 4, 4);
            std::memcpy(&hi, h + 8, 4);
            // The decoder trusts the rest of the header: refuse any bitmap that isn't a
            // plain one-plane bitmap of a standard depth.
            unsigned planes = h[12] | (h[13] << 8), bits = h[14] | (h[15] << 8);
            bool standardDepth = bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
            if (h[0] != 40 || h[1] || h[2] || h[3] || planes != 1 || !standardDepth || wi <= 0 || hi == 0)
                return true;
            w = wi < 0 ? -(long long)wi : wi;
            ht = hi < 0 ? -(long long)hi : hi;
        }
        if (w * ht > MaxPixels())
            return true;
    }
    return false;
}

// Targa has no signature and its decoder trusts the header: an identification field
// or colour map running past the end of the file makes it size its run-length buffer
// from a negative remainder, and unknown types or depths reach unchecked paths. Refuse
// all of these, and sizes beyond our limit.
template <typename Reader>
bool TargaUnsafe(Reader &in, long fileSize)
{
    unsigned char h[18];
    if (!in.Read(h, 18))
        return true;
    int const idLength = h[0], mapType = h[1], type = h[2];
    long const mapBytes = mapType ? long(h[5] | (h[6] << 8)) * ((h[7] + 7) / 8) : 0;
    long long const w = h[12] | (h[13] << 8), ht = h[14] | (h[15] << 8);
    int const depth = h[16];
    bool const mapped = type == 1 || type == 9;
    bool const knownType = mapped || type == 2 || type == 3 || type == 10 || type == 11;
    bool const knownDepth = depth == 8 || depth == 15 || depth == 16 || depth == 24 || depth == 32;
    if (mapType > 1 || (mapped && mapType != 1) || !knownType || !knownDepth || w == 0 || ht == 0)
        return true;
    if (18 + idLength + mapBytes >= fileSize)
        return true;
    return w * ht > MaxPixels();
}

// Formats whose decoders trust sizes in their headers, checked by our own walk of it.
template <typename Reader>
bool HeaderUnsafe(Reader &in, FREE_IMAGE_FORMAT fif, long fileSize)
{
    switch (fif) {
    case FIF_GIF: return GifFrameTooLarge(in);
    case FIF_ICO: return IconUnsafe(in, fileSize);
    case FIF_TARGA: return TargaUnsafe(in, fileSize);
    default: return false;
    }
}

// True when the header states a size beyond what we are willing to decode, or one the
// decoder would mishandle. Other formats that can't load a header alone are let
// through; their own decoder bounds them.
bool DeclaresTooManyPixels(File &file, FREE_IMAGE_FORMAT fif)
{
    if (std::fseek(file.f, 0, SEEK_END) != 0)
        return true;
    long const fileSize = std::ftell(file.f);
    FileReader reader{file.f};
    reader.Rewind();
    bool const unsafe = HeaderUnsafe(reader, fif, fileSize);
    reader.Rewind();
    if (unsafe)
        return true;
    if (!FreeImage_FIFSupportsNoPixels(fif))
        return false;
    FIBITMAP *header = LoadFrom(file, fif, FIF_LOAD_NOPIXELS);
    if (!header)
        return false;
    long long pixels = (long long)FreeImage_GetWidth(header) * (long long)FreeImage_GetHeight(header);
    FreeImage_Unload(header);
    return pixels > MaxPixels();
}

// Frees a bitmap when it leaves scope.
struct BitmapHolder {
    FIBITMAP *bitmap = nullptr;
    explicit BitmapHolder(FIBITMAP *b) : bitmap(b) {}
    ~BitmapHolder()
    {
        if (bitmap)
            FreeImage_Unload(bitmap);
    }
    BitmapHolder(BitmapHolder const &) = delete;
    BitmapHolder &operator=(BitmapHolder const &) = delete;
    void Replace(FIBITMAP *b)
    {
        if (bitmap && bitmap != b)
            FreeImage_Unload(bitmap);
        bitmap = b;
    }
    FIBITMAP *Release()
    {
        FIBITMAP *b = bitmap;
        bitmap = nullptr;
        return b;
    }
};

long ReadFailure(char const *prefix, trString const &name)
{
    trError(trString(prefix) + name);
    return 0;
}

} // namespace

long long MaxPixels()
{
    return g_maxPixels.load(std::memory_order_relaxed);
}

void SetMaxPixels(long long pixels)
{
    g_maxPixels.store(pixels > 0 ? pixels : 1, std::memory_order_relaxed);
}

void InstallOutputHandler()
{
    static std::once_flag once;
    std::call_once(once, [] { FreeImage_SetOutputMessage(&OutputHandler); });
}

long ReadIntoImage(trString const &name, trImage &image)
{
    InstallOutputHandler();
    char const *unable = "ReadImage: Unable to load image: \n\n";
    File file(name.chars, "rb");
    FREE_IMAGE_FORMAT fif = FormatOf(file, name.chars);
    if (fif == FIF_UNKNOWN || DeclaresTooManyPixels(file, fif))
        return ReadFailure(unable, name);
    BitmapHolder dib(LoadFrom(file, fif, 0));
    if (!dib.bitmap || !FreeImage_HasPixels(dib.bitmap))
        return ReadFailure(unable, name);

    int channels = 0, bytesPerChannel = 0;
    bool isSigned = false;
    bool swapRedBlue = false;
    switch (FreeImage_GetImageType(dib.bitmap)) {
    case FIT_BITMAP: {
        FREE_IMAGE_COLOR_TYPE colourType = FreeImage_GetColorType(dib.bitmap);
        unsigned bpp = FreeImage_GetBPP(dib.bitmap);
        FIBITMAP *converted = dib.bitmap;
        if (colourType == FIC_MINISBLACK) {
            if (bpp != 8)
                converted = FreeImage_ConvertToGreyscale(dib.bitmap);
        } else if (colourType == FIC_MINISWHITE) {
            converted = FreeImage_ConvertToGreyscale(dib.bitmap);
        } else if (colourType != FIC_RGB && colourType != FIC_RGBALPHA) {
            converted = FreeImage_ConvertTo32Bits(dib.bitmap);
        }
        if (!converted)
            return ReadFailure("ReadImage: Unknown colour type: \n\n", name);
        dib.Replace(converted);
        switch (FreeImage_GetBPP(dib.bitmap)) {
        case 8: channels = 1; break;
        case 16: channels = 2; break;
        case 24: channels = 3; break;
        case 32: channels = 4; break;
        default: return ReadFailure("ReadImage: Unknown bit depth.\n\n", name);
        }
        bytesPerChannel = 1;
        swapRedBlue = channels >= 3;
        break;
    }
    case FIT_UINT16: channels = 1; bytesPerChannel = 2; break;
    case FIT_INT16: channels = 1; bytesPerChannel = 2; isSigned = true; break;
    case FIT_FLOAT: channels = 1; bytesPerChannel = 4; break;
    case FIT_RGB16: channels = 3; bytesPerChannel = 2; break;
    case FIT_RGBA16: channels = 4; bytesPerChannel = 2; break;
    case FIT_RGBF: channels = 3; bytesPerChannel = 4; break;
    case FIT_RGBAF: channels = 4; bytesPerChannel = 4; break;
    default:
        return ReadFailure("ReadImage: Please convert image to SGI for non-standard bit depths.\n\n", name);
    }

    unsigned width = FreeImage_GetWidth(dib.bitmap);
    unsigned height = FreeImage_GetHeight(dib.bitmap);
    // An empty picture is as useless as an unreadable one.
    if (width == 0 || height == 0 || (long long)width * height > MaxPixels())
        return ReadFailure(unable, name);
    std::size_t rowBytes = std::size_t(width) * std::size_t(channels * bytesPerChannel);
    // A scan line shorter than the layout says would be read past its end.
    if (std::size_t(FreeImage_GetLine(dib.bitmap)) < rowBytes)
        return ReadFailure(unable, name);
    if (!image.Init(0, 0, int(width), int(height), channels, bytesPerChannel, isSigned)) {
        image.Cleanup();
        return ReadFailure("ReadImage: Unable to (re)allocate image (file ", name + ")");
    }
    for (unsigned y = 0; y < height; ++y) {
        BYTE const *source = FreeImage_GetScanLine(dib.bitmap, int(y));
        unsigned char *target = image.ScanlineRaw(int(y));
        if (!source) {
            image.Cleanup();
            return ReadFailure(unable, name);
        }
        std::memcpy(target, source, rowBytes);
        if (swapRedBlue) {
            for (unsigned x = 0; x < width; ++x) {
                unsigned char *p = target + std::size_t(x) * std::size_t(channels);
                unsigned char t = p[0];
                p[0] = p[2];
                p[2] = t;
            }
        }
    }
    return 1;
}

std::vector<std::pair<std::string, std::string>> ReadableFormats()
{
    std::vector<std::pair<std::string, std::string>> formats;
    int count = FreeImage_GetFIFCount();
    for (int i = 0; i < count; ++i) {
        auto fif = FREE_IMAGE_FORMAT(i);
        char const *description = FreeImage_GetFIFDescription(fif);
        char const *extensions = FreeImage_GetFIFExtensionList(fif);
        if (description)
            formats.emplace_back(description, extensions ? extensions : "");
    }
    return formats;
}

bool CanOpen(trString const &path)
{
    if (!path.chars || !*path.chars)
        return false;
    File file(path.chars, "rb");
    if (file.f && FreeImage_GetFileTypeFromHandle(StdioIO(), file.f, 0) != FIF_UNKNOWN)
        return true;
    return FreeImage_GetFIFFromFilename(path.chars) != FIF_UNKNOWN;
}

FIBITMAP *Load(trString const &path, bool headerOnly)
{
    InstallOutputHandler();
    File file(path.chars, "rb");
    FREE_IMAGE_FORMAT fif = FormatOf(file, path.chars);
    if (fif == FIF_UNKNOWN)
        return nullptr;
    if (headerOnly && FreeImage_FIFSupportsNoPixels(fif))
        return LoadFrom(file, fif, FIF_LOAD_NOPIXELS);
    if (DeclaresTooManyPixels(file, fif))
        return nullptr;
    return LoadFrom(file, fif, 0);
}

void Unload(FIBITMAP *bitmap)
{
    if (bitmap)
        FreeImage_Unload(bitmap);
}

int Width(FIBITMAP *bitmap)
{
    return bitmap ? int(FreeImage_GetWidth(bitmap)) : 0;
}

int Height(FIBITMAP *bitmap)
{
    return bitmap ? int(FreeImage_GetHeight(bitmap)) : 0;
}

int BitsPerPixel(FIBITMAP *bitmap)
{
    return bitmap ? int(FreeImage_GetBPP(bitmap)) : 0;
}

FIBITMAP *Thumbnail(FIBITMAP *bitmap, int maxSize)
{
    if (!bitmap || maxSize <= 0 || !FreeImage_HasPixels(bitmap))
        return nullptr;
    return FreeImage_MakeThumbnail(bitmap, maxSize, TRUE);
}

FIBITMAP *Rescale(FIBITMAP *bitmap, int w, int h)
{
    if (!bitmap || w <= 0 || h <= 0 || !FreeImage_HasPixels(bitmap))
        return nullptr;
    return FreeImage_Rescale(bitmap, w, h, FILTER_BICUBIC);
}

FIBITMAP *Clone(FIBITMAP *bitmap)
{
    return bitmap ? FreeImage_Clone(bitmap) : nullptr;
}

FIBITMAP *FromBgraBytes(unsigned char const *bytes, int w, int h)
{
    if (!bytes || w <= 0 || h <= 0 || (long long)w * h > MaxPixels())
        return nullptr;
    FIBITMAP *bitmap = FreeImage_Allocate(w, h, 32, FI_RGBA_RED_MASK, FI_RGBA_GREEN_MASK, FI_RGBA_BLUE_MASK);
    if (!bitmap)
        return nullptr;
    std::size_t rowBytes = std::size_t(w) * 4;
    for (int y = 0; y < h; ++y)
        std::memcpy(FreeImage_GetScanLine(bitmap, y), bytes + rowBytes * std::size_t(y), rowBytes);
    return bitmap;
}

FIBITMAP *PasteOnCanvas(FIBITMAP *source, int w, int h, int left, int top, unsigned char alpha)
{
    if (!source || w <= 0 || h <= 0)
        return nullptr;
    BitmapHolder canvas(FreeImage_Allocate(w, h, 32, FI_RGBA_RED_MASK, FI_RGBA_GREEN_MASK, FI_RGBA_BLUE_MASK));
    if (!canvas.bitmap)
        return nullptr;
    for (int y = 0; y < h; ++y) {
        BYTE *line = FreeImage_GetScanLine(canvas.bitmap, y);
        std::memset(line, 0, std::size_t(w) * 4);
        for (int x = 0; x < w; ++x)
            line[4 * x + FI_RGBA_ALPHA] = alpha;
    }
    BitmapHolder source32(FreeImage_ConvertTo32Bits(source));
    if (!source32.bitmap || !FreeImage_Paste(canvas.bitmap, source32.bitmap, left, top, 256))
        return nullptr;
    return canvas.Release();
}

bool SaveJ2K(FIBITMAP *bitmap, trString const &path, int flags)
{
    if (!bitmap)
        return false;
    File file(path.chars, "wb");
    if (!file.f)
        return false;
    return FreeImage_SaveToHandle(FIF_J2K, bitmap, StdioIO(), file.f, flags) != FALSE;
}

bool EncodeJpeg(FIBITMAP *bitmap, std::vector<unsigned char> &bytes)
{
    bytes.clear();
    if (!bitmap)
        return false;
    BitmapHolder rgb(FreeImage_ConvertTo24Bits(bitmap));
    if (!rgb.bitmap)
        return false;
    FIMEMORY *memory = FreeImage_OpenMemory();
    if (!memory)
        return false;
    bool ok = FreeImage_SaveToMemory(FIF_JPEG, rgb.bitmap, memory, JPEG_QUALITYNORMAL) != FALSE;
    BYTE *data = nullptr;
    DWORD size = 0;
    if (ok && FreeImage_AcquireMemory(memory, &data, &size) && data && size > 0)
        bytes.assign(data, data + size);
    else
        ok = false;
    FreeImage_CloseMemory(memory);
    return ok;
}

FIBITMAP *DecodeMemory(unsigned char const *bytes, long size)
{
    InstallOutputHandler();
    if (!bytes || size <= 0 || size > 0x7fffffffL)
        return nullptr;
    // FreeImage reads the stream only; the cast is for its interface.
    FIMEMORY *memory = FreeImage_OpenMemory(const_cast<BYTE *>(bytes), DWORD(size));
    if (!memory)
        return nullptr;
    FIBITMAP *bitmap = nullptr;
    FREE_IMAGE_FORMAT fif = FreeImage_GetFileTypeFromMemory(memory, 0);
    if (fif != FIF_UNKNOWN && FreeImage_FIFSupportsReading(fif)) {
        MemoryReader reader{bytes, size};
        bool tooLarge = HeaderUnsafe(reader, fif, size);
        if (!tooLarge && FreeImage_FIFSupportsNoPixels(fif)) {
            FreeImage_SeekMemory(memory, 0, SEEK_SET);
            FIBITMAP *header = FreeImage_LoadFromMemory(fif, memory, FIF_LOAD_NOPIXELS);
            if (header) {
                tooLarge = (long long)FreeImage_GetWidth(header) * FreeImage_GetHeight(header) > MaxPixels();
                FreeImage_Unload(header);
            }
            FreeImage_SeekMemory(memory, 0, SEEK_SET);
        }
        if (!tooLarge)
            bitmap = FreeImage_LoadFromMemory(fif, memory, 0);
    }
    FreeImage_CloseMemory(memory);
    return bitmap;
}

bool ForEachPixel(FIBITMAP *bitmap,
                  void (*visit)(void *context, int x, int y, unsigned char r, unsigned char g, unsigned char b,
                                unsigned char a),
                  void *context)
{
    if (!bitmap || !visit || !FreeImage_HasPixels(bitmap))
        return false;
    BitmapHolder converted(nullptr);
    FIBITMAP *source = bitmap;
    unsigned bpp = FreeImage_GetBPP(bitmap);
    if (FreeImage_GetImageType(bitmap) != FIT_BITMAP || (bpp != 24 && bpp != 32)) {
        converted.Replace(FreeImage_ConvertTo32Bits(bitmap));
        if (!converted.bitmap)
            return false;
        source = converted.bitmap;
        bpp = 32;
    }
    int w = int(FreeImage_GetWidth(source));
    int h = int(FreeImage_GetHeight(source));
    int step = int(bpp / 8);
    for (int line = 0; line < h; ++line) {
        BYTE const *p = FreeImage_GetScanLine(source, line);
        int y = h - 1 - line;
        for (int x = 0; x < w; ++x, p += step)
            visit(context, x, y, p[FI_RGBA_RED], p[FI_RGBA_GREEN], p[FI_RGBA_BLUE],
                  step == 4 ? p[FI_RGBA_ALPHA] : 255);
    }
    return true;
}

void FlipVertical(FIBITMAP *bitmap)
{
    if (bitmap)
        FreeImage_FlipVertical(bitmap);
}

} // namespace trFreeImageAdapter
