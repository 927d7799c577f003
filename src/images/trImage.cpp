// Pixel stores: layout, allocation, conversions, interpolating look-ups, fills,
// operators, dithering, the 3-D store's capacity ladder, image lists and the small
// handle records.
#include "images/trImage.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

#include "foundation/trColourFilters.h"
#include "foundation/trMessages.h"
#include "foundation/trRand.h"
#include "images/trFreeImageAdapter.h"
#include "images/trImageArithmetic.h"

namespace {

constexpr double kBytesToMb = 9.536743e-7;
constexpr float kByteScale = 0.003921569f;
constexpr float kShortScale = 1.5259022e-5f;
// No store may exceed this; larger requests are refused like a failed allocation, so
// absurd sizes from a file header never reach the allocator.
constexpr std::int64_t kMaxStoreBytes = std::int64_t(1) << 40;

trString FormatMb(char const *format, double mb)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, mb);
    return trString(buffer);
}

// Pixel to floats for any layout; writes up to four channels and reports how many
// were understood (0 for an unsupported layout).
int PixelToFloats(void const *pixel, int channels, int bytesPerChannel, bool isSigned, float out[4])
{
    if (!pixel || (channels != 1 && channels != 3 && channels != 4))
        return 0;
    switch (bytesPerChannel) {
    case 1: {
        auto p = static_cast<unsigned char const *>(pixel);
        for (int c = 0; c < channels; ++c)
            out[c] = float(p[c]) * kByteScale;
        return channels;
    }
    case 2: {
        for (int c = 0; c < channels; ++c) {
            if (isSigned) {
                std::int16_t v;
                std::memcpy(&v, static_cast<unsigned char const *>(pixel) + 2 * c, 2);
                out[c] = float(v) * kShortScale;
            } else {
                std::uint16_t v;
                std::memcpy(&v, static_cast<unsigned char const *>(pixel) + 2 * c, 2);
                out[c] = float(v) * kShortScale;
            }
        }
        return channels;
    }
    case 4:
        std::memcpy(out, pixel, 4 * std::size_t(channels));
        return channels;
    default:
        return 0;
    }
}

trFCol ToFCol(void const *pixel, int channels, int bytesPerChannel, bool isSigned)
{
    float v[4];
    int n = PixelToFloats(pixel, channels, bytesPerChannel, isSigned, v);
    if (n == 1)
        return trFCol(v[0], v[0], v[0]);
    if (n >= 3)
        return trFCol(v[0], v[1], v[2]);
    return trFCol(0.0f, 0.0f, 0.0f);
}

trF4Col ToF4Col(void const *pixel, int channels, int bytesPerChannel, bool isSigned)
{
    float v[4];
    int n = PixelToFloats(pixel, channels, bytesPerChannel, isSigned, v);
    if (n == 1)
        return trF4Col(v[0], v[0], v[0], 1.0f);
    if (n == 3)
        return trF4Col(v[0], v[1], v[2], 1.0f);
    if (n == 4)
        return trF4Col(v[0], v[1], v[2], v[3]);
    return trF4Col(0.0f, 0.0f, 0.0f, 1.0f);
}

// Wraps by whole sizes, or clamps. Indices far outside wrap as often as needed so a
// look-up never leaves the store.
inline int WrapOrClamp(long i, int size, bool wrap)
{
    if (wrap) {
        long m = i % size;
        return int(m < 0 ? m + size : m);
    }
    return int(i < 0 ? 0 : (i >= size ? size - 1 : i));
}

// Keeps a coordinate finite and well inside long range before it is floored.
inline double SaneCoordinate(double u)
{
    if (!(u == u))
        return 0.0;
    return std::clamp(u, -1e15, 1e15);
}

// The taps of a separable kernel along one axis: pixel indices and weights.
template <int N>
struct Taps {
    long index[N];
    double weight[N];
};
using SmoothTaps = Taps<4>;
using LinearTaps = Taps<2>;

// The four taps and weights of the smooth kernel around u.
inline SmoothTaps MakeSmoothTaps(double u)
{
    SmoothTaps t;
    u = SaneCoordinate(u);
    long k = long(std::floor(u));
    for (int j = 0; j < 4; ++j) {
        long i = k - 1 + j;
        double d = std::fabs(u - double(i));
        double s = d < 1.0 ? d * d : 2.0 - (2.0 - d) * (2.0 - d);
        t.index[j] = i;
        t.weight[j] = (1.0 - s * 0.5) * 0.5;
    }
    return t;
}

inline LinearTaps MakeLinearTaps(double u)
{
    LinearTaps t;
    u = SaneCoordinate(u);
    long k = long(std::floor(u));
    for (int j = 0; j < 2; ++j) {
        t.index[j] = k + j;
        t.weight[j] = 1.0 - std::fabs(u - double(k + j));
    }
    return t;
}

// Adds weight x (the row's pixels under the x taps) to sum. `pixelAt(column)` reads
// the row. Taps of no weight are skipped: they add nothing and needn't be read.
template <int N, class PixelAt>
inline void AddRow(Taps<N> const &tx, int width, bool wrapX, PixelAt pixelAt, double weight, double sum[4])
{
    double row[4] = {0.0, 0.0, 0.0, 0.0};
    for (int i = 0; i < N; ++i) {
        if (!(tx.weight[i] > 0.0))
            continue;
        trF4Col p = pixelAt(WrapOrClamp(tx.index[i], width, wrapX));
        row[0] += p.r * tx.weight[i];
        row[1] += p.g * tx.weight[i];
        row[2] += p.b * tx.weight[i];
        row[3] += p.a * tx.weight[i];
    }
    for (int c = 0; c < 4; ++c)
        sum[c] += row[c] * weight;
}

// A volume's pixels under a separable kernel of N taps per axis.
template <int N>
trF4Col VolumeLookup(trImage3 const &image, Taps<N> const &tx, Taps<N> const &ty, Taps<N> const &tz, bool wrapX,
                     bool wrapY, bool wrapZ)
{
    double sum[4] = {0.0, 0.0, 0.0, 0.0};
    for (int k = 0; k < N; ++k) {
        if (!(tz.weight[k] > 0.0))
            continue;
        int zi = WrapOrClamp(tz.index[k], image.Depth(), wrapZ);
        double plane[4] = {0.0, 0.0, 0.0, 0.0};
        for (int j = 0; j < N; ++j) {
            if (!(ty.weight[j] > 0.0))
                continue;
            int yi = WrapOrClamp(ty.index[j], image.Height(), wrapY);
            AddRow(tx, image.Width(), wrapX,
                   [&](int xi) { return image.F4ColFromPixel(image.PixelRaw(xi, yi, zi)); }, ty.weight[j], plane);
        }
        for (int c = 0; c < 4; ++c)
            sum[c] += plane[c] * tz.weight[k];
    }
    return trF4Col(float(sum[0]), float(sum[1]), float(sum[2]), float(sum[3]));
}

} // namespace

// ---------------------------------------------------------------------------
// trImage

trImage::trImage()
{
    trFreeImageAdapter::InstallOutputHandler();
}

trImage::~trImage()
{
    delete[] pixels;
}

void trImage::SetLayout(int channels, int bytesPerChannelArg, bool signedArg)
{
    numChannels = channels;
    bytesPerChannel = bytesPerChannelArg;
    bytesPerPixel = channels * bytesPerChannelArg;
    isSigned = signedArg;
}

long trImage::Init(int x, int y, int w, int h)
{
    return Init(x, y, w, h, 0, 0, false);
}

long trImage::Init(int x, int y, int w, int h, int channels, int bytesPerChannelArg)
{
    return Init(x, y, w, h, channels, bytesPerChannelArg, false);
}

long trImage::Init(int x, int y, int w, int h, int channels, int bytesPerChannelArg, bool signedArg)
{
    Cleanup();
    if (channels >= 1)
        numChannels = channels;
    if (bytesPerChannelArg >= 1)
        bytesPerChannel = bytesPerChannelArg;
    bytesPerPixel = numChannels * bytesPerChannel;
    isSigned = signedArg;
    if (bytesPerPixel <= 0) {
        trError("trImage: unable to allocate pixelmap with zero bytes per pixel");
        return 0;
    }
    double bytes = double(w) * double(h) * double(bytesPerPixel);
    if (w < 0 || h < 0 || bytes > double(kMaxStoreBytes)) {
        trError(trString("trImage: unable to allocate pixelmap: size ") + FormatMb("%.3g", bytes * kBytesToMb) +
                " Mb");
        return 0;
    }
    std::int64_t count = std::int64_t(w) * h * bytesPerPixel;
    // An empty image (a zero side) holds no store at all.
    if (count > 0) {
        pixels = new (std::nothrow) unsigned char[std::size_t(count)];
        if (!pixels) {
            trError(trString("trImage: unable to allocate pixelmap: size ") +
                    FormatMb("%.3g", double(count) * kBytesToMb) + " Mb");
            return 0;
        }
    }
    offsetX = x;
    offsetY = y;
    width = w;
    height = h;
    valueMultiplierForWriteFile = 1.0;
    valueOffsetForWriteFile = 0.0;
    return 1;
}

void trImage::Cleanup()
{
    delete[] pixels;
    pixels = nullptr;
    offsetX = offsetY = 0;
    width = height = 0;
}

void trImage::Clear()
{
    if (!pixels)
        return;
    std::size_t rowBytes = std::size_t(width) * std::size_t(bytesPerPixel);
    for (int y = 0; y < height; ++y)
        std::memset(ScanlineRaw(y), 0, rowBytes);
}

long trImage::Copy(trImage const &other)
{
    if (&other == this)
        return 1;
    if (!Init(other.offsetX, other.offsetY, other.width, other.height, other.numChannels, other.bytesPerChannel,
              other.isSigned))
        return 0;
    if (pixels && other.pixels)
        std::memcpy(pixels, other.pixels, std::size_t(NumBytes()));
    valueMultiplierForWriteFile = other.valueMultiplierForWriteFile;
    valueOffsetForWriteFile = other.valueOffsetForWriteFile;
    return 1;
}

trFCol trImage::FColFromPixel(void const *pixel) const
{
    return ToFCol(pixel, numChannels, bytesPerChannel, isSigned);
}

trF4Col trImage::F4ColFromPixel(void const *pixel) const
{
    return ToF4Col(pixel, numChannels, bytesPerChannel, isSigned);
}

trFCol trImage::FColLookupSmooth(double x, double y, bool wrapX, bool wrapY) const
{
    trF4Col c = F4ColLookupSmooth(x, y, wrapX, wrapY);
    return trFCol(c.r, c.g, c.b);
}

trF4Col trImage::F4ColLookupSmooth(double x, double y, bool wrapX, bool wrapY) const
{
    if (!pixels || width <= 0 || height <= 0)
        return trF4Col(0.0f, 0.0f, 0.0f, 0.0f);
    SmoothTaps tx = MakeSmoothTaps(x + 0.5);
    SmoothTaps ty = MakeSmoothTaps(y + 0.5);
    double sum[4] = {0.0, 0.0, 0.0, 0.0};
    for (int j = 0; j < 4; ++j) {
        if (!(ty.weight[j] > 0.0))
            continue;
        int row = WrapOrClamp(ty.index[j], height, wrapY);
        AddRow(tx, width, wrapX, [&](int column) { return F4ColFromPixel(PixelRaw(column, row)); }, ty.weight[j],
               sum);
    }
    return trF4Col(float(sum[0]), float(sum[1]), float(sum[2]), float(sum[3]));
}

long trImage::ReadFreeImage(trString const &name)
{
    return trFreeImageAdapter::ReadIntoImage(name, *this);
}

long trImage::FailRead(trString const &message)
{
    Cleanup();
    trError(message);
    return 0;
}

// ---------------------------------------------------------------------------
// Typed kinds

trFImage::trFImage()
{
    SetLayout(3, 4, false);
}
trFImage::~trFImage() = default;

trF4Image::trF4Image()
{
    SetLayout(4, 4, false);
}
trF4Image::~trF4Image() = default;

trBImage::trBImage()
{
    SetLayout(3, 1, false);
}
trBImage::~trBImage() = default;

trFloatMap::trFloatMap()
{
    SetLayout(1, 4, false);
}
trFloatMap::~trFloatMap() = default;

namespace {

// The part of [x0, x1) x [y0, y1) inside the image, in raw coordinates; false when
// nothing is left. Out-of-range rectangles are clipped rather than trusted.
bool ClipRectangle(trImage const &image, int &x0, int &y0, int &x1, int &y1)
{
    if (!image.Pixels())
        return false;
    x0 = std::max(x0, image.OffsetX()) - image.OffsetX();
    y0 = std::max(y0, image.OffsetY()) - image.OffsetY();
    x1 = std::min(x1, image.EndX()) - image.OffsetX();
    y1 = std::min(y1, image.EndY()) - image.OffsetY();
    return x0 < x1 && y0 < y1;
}

template <typename T>
void FillAll(T *p, std::int64_t count, T const &value)
{
    for (std::int64_t i = 0; i < count; ++i)
        p[i] = value;
}

template <typename T>
void FillRect(trImage &image, int x0, int y0, int x1, int y1, T const &value)
{
    if (x0 >= x1 || y0 >= y1 || !ClipRectangle(image, x0, y0, x1, y1))
        return;
    for (int y = y0; y < y1; ++y) {
        T *row = reinterpret_cast<T *>(image.ScanlineRaw(y));
        for (int x = x0; x < x1; ++x)
            row[x] = value;
    }
}

} // namespace

void trFImage::Fill(trFCol const &c)
{
    if (pixels)
        FillAll(FPixelRaw(std::int64_t(0)), std::int64_t(width) * height, c);
}

void trFImage::FillRectangleOffset(int x0, int y0, int x1, int y1, trFCol const &c)
{
    FillRect(*this, x0, y0, x1, y1, c);
}

trFCol trFImage::MeanCol() const
{
    std::int64_t count = std::int64_t(width) * height;
    if (!pixels || count <= 0)
        return trFCol(0.0f, 0.0f, 0.0f);
    float r = 0.0f, g = 0.0f, b = 0.0f;
    trFCol const *p = FPixelRaw(std::int64_t(0));
    for (std::int64_t i = 0; i < count; ++i) {
        r += p[i].r;
        g += p[i].g;
        b += p[i].b;
    }
    float scale = 1.0f / float(count);
    return trFCol(r * scale, g * scale, b * scale);
}

trFImage &trFImage::operator=(trFImage const &other)
{
    if (&other == this)
        return *this;
    bool reuse = pixels && width == other.width && height == other.height && offsetX == other.offsetX &&
                 offsetY == other.offsetY;
    if (!reuse && !Init(other.offsetX, other.offsetY, other.width, other.height))
        return *this;
    if (pixels && other.pixels)
        std::memcpy(pixels, other.pixels, std::size_t(NumBytes()));
    return *this;
}

namespace {

void RunAdd(trFImage &target, trFImage const &front, trFCol const &frontMultiplier)
{
    trImageAdd op;
    op.SetDestination(&target);
    op.SetSourceBack(target);
    op.SetSourceFront(front);
    op.SetFrontMultiplier(frontMultiplier);
    op.Render(target.OffsetX(), target.OffsetY(), target.Width(), target.Height());
}

void RunBinary(trImageBinaryOp &op, trFImage &target, trFImage const &front)
{
    op.SetDestination(&target);
    op.SetSourceBack(target);
    op.SetSourceFront(front);
    op.Render(target.OffsetX(), target.OffsetY(), target.Width(), target.Height());
}

} // namespace

trFImage &trFImage::operator+=(trFImage const &other)
{
    RunAdd(*this, other, trFCol(1.0f, 1.0f, 1.0f));
    return *this;
}

trFImage &trFImage::operator-=(trFImage const &other)
{
    RunAdd(*this, other, trFCol(-1.0f, -1.0f, -1.0f));
    return *this;
}

trFImage &trFImage::operator*=(trFImage const &other)
{
    trImageMultiply op;
    RunBinary(op, *this, other);
    return *this;
}

trFImage &trFImage::operator/=(trFImage const &other)
{
    trImageDivide op;
    RunBinary(op, *this, other);
    return *this;
}

void trF4Image::Fill(trF4Col const &c)
{
    if (pixels)
        FillAll(F4PixelRaw(0, 0), std::int64_t(width) * height, c);
}

void trF4Image::FillRectangleOffset(int x0, int y0, int x1, int y1, trF4Col const &c)
{
    FillRect(*this, x0, y0, x1, y1, c);
}

void trBImage::Fill(trBCol const &c)
{
    if (pixels)
        FillAll(BPixelRaw(0, 0), std::int64_t(width) * height, c);
}

void trBImage::FillRectangleOffset(int x0, int y0, int x1, int y1, trBCol const &c)
{
    FillRect(*this, x0, y0, x1, y1, c);
}

void trBImage::SetBytePixelsFromFloatPixels(trFImage const &source, trFColFilter const *filter, long seed)
{
    bool sameShape = pixels && width == source.Width() && height == source.Height() &&
                     offsetX == source.OffsetX() && offsetY == source.OffsetY();
    // Takes the source's rectangle when it differs from its own.
    if (!sameShape && !Init(source.OffsetX(), source.OffsetY(), source.Width(), source.Height()))
        return;
    if (!pixels || !source.Pixels())
        return;
    trMersenneTwister twister;
    twister.sgenrand(static_cast<unsigned long>(seed));
    auto toByte = [](float value, unsigned long draw) -> unsigned char {
        double v = double(value) * 255.0 + double(draw) * 2.3283064e-10;
        if (!(v > 0.0))
            return 0;
        if (v >= 255.0)
            return 255;
        return static_cast<unsigned char>(v);
    };
    std::int64_t count = std::int64_t(width) * height;
    trFCol const *in = source.FPixelRaw(std::int64_t(0));
    trBCol *out = BPixelRaw(0, 0);
    for (std::int64_t i = 0; i < count; ++i) {
        trFCol c = filter ? (*filter)(in[i]) : in[i];
        unsigned long blue = twister.genrand();
        unsigned long green = twister.genrand();
        unsigned long red = twister.genrand();
        out[i].r = toByte(c.r, red);
        out[i].g = toByte(c.g, green);
        out[i].b = toByte(c.b, blue);
    }
}

trBImage &trBImage::operator=(trBImage const &other)
{
    if (&other == this)
        return *this;
    bool reuse = pixels && width == other.width && height == other.height && offsetX == other.offsetX &&
                 offsetY == other.offsetY;
    if (!reuse && !Init(other.offsetX, other.offsetY, other.width, other.height))
        return *this;
    if (pixels && other.pixels)
        std::memcpy(pixels, other.pixels, std::size_t(NumBytes()));
    return *this;
}

void trFloatMap::Fill(float v)
{
    if (pixels)
        FillAll(FPixelRaw(0, 0), std::int64_t(width) * height, v);
}

void trFloatMap::FillRectangleOffset(int x0, int y0, int x1, int y1, float v)
{
    FillRect(*this, x0, y0, x1, y1, v);
}

// ---------------------------------------------------------------------------
// trImage3

trImage3::~trImage3()
{
    Cleanup();
}

long trImage3::Init(int x, int y, int z, int w, int h, int d)
{
    return Init(x, y, z, w, h, d, 0, 0, false);
}

long trImage3::Init(int x, int y, int z, int w, int h, int d, int channels, int bytesPerChannelArg)
{
    return Init(x, y, z, w, h, d, channels, bytesPerChannelArg, false);
}

long trImage3::Init(int x, int y, int z, int w, int h, int d, int channels, int bytesPerChannelArg,
                    bool signedArg)
{
    if (channels >= 1)
        numChannels = channels;
    if (bytesPerChannelArg >= 1)
        bytesPerChannel = bytesPerChannelArg;
    bytesPerPixel = numChannels * bytesPerChannel;
    isSigned = signedArg;
    if (bytesPerPixel <= 0) {
        Cleanup();
        trError("trImage3: unable to allocate pixelmap with zero bytes per pixel");
        return 0;
    }
    double needDouble = double(bytesPerPixel) * double(w) * double(h) * double(d);
    if (w < 0 || h < 0 || d < 0 || needDouble > double(kMaxStoreBytes)) {
        Cleanup();
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "%.3f", needDouble * kBytesToMb);
        trError(trString("trImage3: unable to allocate pixelmap: size ") + buffer + " Mb");
        return 0;
    }
    std::int64_t need = std::int64_t(bytesPerPixel) * w * h * d;
    bool keep = need <= capacity && 0.9 * double(capacity) <= double(need);
    if (!keep) {
        std::int64_t newCapacity = 0;
        if (need > 0) {
            double steps = std::ceil(std::log(double(need)) / std::log(1.05));
            newCapacity = std::int64_t(std::ceil(std::pow(1.05, steps)));
            if (newCapacity < need)
                newCapacity += 1024 + ((need - newCapacity - 1) & ~std::int64_t(1023));
        }
        Cleanup();
        if (newCapacity > 0) {
            pixels = new (std::nothrow) unsigned char[std::size_t(newCapacity)];
            double mb = double(newCapacity) * kBytesToMb;
            if (!pixels) {
                char buffer[64];
                std::snprintf(buffer, sizeof buffer, "%.3f", mb);
                trError(trString("trImage3: unable to allocate pixelmap: size ") + buffer + " Mb");
                return 0;
            }
            capacity = newCapacity;
            if (mb >= 1000.0) {
                char buffer[64];
                std::snprintf(buffer, sizeof buffer, "%d", int(std::ceil(mb - 0.5)));
                trOutMsg(trString("trImage3: allocated ~") + buffer + " Mb");
            }
        }
    }
    offsetX = x;
    offsetY = y;
    offsetZ = z;
    width = w;
    height = h;
    depth = d;
    valueMultiplierForWriteFile = 1.0;
    valueOffsetForWriteFile = 0.0;
    return 1;
}

void trImage3::Cleanup()
{
    if (pixels) {
        double mb = double(capacity) * kBytesToMb;
        delete[] pixels;
        pixels = nullptr;
        if (mb >= 1000.0) {
            char buffer[64];
            std::snprintf(buffer, sizeof buffer, "%d", int(std::ceil(mb - 0.5)));
            trOutMsg(trString("trImage3: freed ~") + buffer + " Mb");
        }
    }
    capacity = 0;
    offsetX = offsetY = offsetZ = 0;
    width = height = depth = 0;
}

void trImage3::Clear()
{
    if (pixels)
        std::memset(pixels, 0, std::size_t(std::int64_t(bytesPerPixel) * width * height * depth));
}

trFCol trImage3::FColFromPixel(void const *pixel) const
{
    return ToFCol(pixel, numChannels, bytesPerChannel, isSigned);
}

trF4Col trImage3::F4ColFromPixel(void const *pixel) const
{
    return ToF4Col(pixel, numChannels, bytesPerChannel, isSigned);
}

trF4Col trImage3::F4ColLookupLinear(double x, double y, double z, bool wrapX, bool wrapY, bool wrapZ) const
{
    if (!pixels || width <= 0 || height <= 0 || depth <= 0)
        return trF4Col(0.0f, 0.0f, 0.0f, 0.0f);
    return VolumeLookup(*this, MakeLinearTaps(x - 0.5), MakeLinearTaps(y - 0.5), MakeLinearTaps(z - 0.5), wrapX, wrapY,
                        wrapZ);
}

trFCol trImage3::FColLookupSmooth(double x, double y, double z, bool wrapX, bool wrapY, bool wrapZ) const
{
    trF4Col c = F4ColLookupSmooth(x, y, z, wrapX, wrapY, wrapZ);
    return trFCol(c.r, c.g, c.b);
}

trF4Col trImage3::F4ColLookupSmooth(double x, double y, double z, bool wrapX, bool wrapY, bool wrapZ) const
{
    if (!pixels || width <= 0 || height <= 0 || depth <= 0)
        return trF4Col(0.0f, 0.0f, 0.0f, 0.0f);
    return VolumeLookup(*this, MakeSmoothTaps(x - 0.5), MakeSmoothTaps(y - 0.5), MakeSmoothTaps(z - 0.5), wrapX, wrapY,
                        wrapZ);
}

// ---------------------------------------------------------------------------
// Image lists

struct trFImageList::Record {
    std::vector<trFImageListEntry> entries;
    trImageListFilter *postFilter = nullptr;
};

trFImageList::trFImageList() : record(std::make_shared<Record>()) {}

trFImageList::trFImageList(trFImage *image, double exposure, bool allowsFilters) : trFImageList()
{
    AddImage(image, svRgb, exposure, allowsFilters, true);
}

trFImageList::trFImageList(trFImage *rgb, trFImage *alpha, double exposure, bool allowsFilters)
    : trFImageList()
{
    AddImage(rgb, svRgb, exposure, allowsFilters, true);
    AddImage(alpha, svAlpha, exposure, allowsFilters, true);
}

void trFImageList::AddImage(trFImage *image, trRenderElementType type, double exposure, bool allowsFilters,
                            bool shouldOutput)
{
    trFImageListEntry e;
    e.image = image;
    e.type = type;
    e.exposure = exposure;
    e.allowsFilters = allowsFilters;
    e.shouldOutput = shouldOutput;
    record->entries.push_back(e);
}

std::uint64_t trFImageList::NumImages() const
{
    return record->entries.size();
}

trFImage *trFImageList::Image(std::uint64_t i) const
{
    return i < record->entries.size() ? record->entries[i].image : nullptr;
}

trRenderElementType trFImageList::Type(std::uint64_t i) const
{
    return i < record->entries.size() ? record->entries[i].type : svRgb;
}

char const *trFImageList::TypeString(std::uint64_t i) const
{
    return i < record->entries.size() ? trRenderElementName(record->entries[i].type) : "";
}

double trFImageList::Exposure(std::uint64_t i) const
{
    return i < record->entries.size() ? record->entries[i].exposure : 1.0;
}

bool trFImageList::AllowsFilters(std::uint64_t i) const
{
    return i < record->entries.size() && record->entries[i].allowsFilters;
}

bool trFImageList::ShouldOutput(std::uint64_t i) const
{
    return i < record->entries.size() && record->entries[i].shouldOutput;
}

bool trFImageList::FindType(trRenderElementType type, std::uint64_t &index) const
{
    for (std::uint64_t i = 0; i < record->entries.size(); ++i) {
        if (record->entries[i].type == type) {
            index = i;
            return true;
        }
    }
    return false;
}

void trFImageList::AssignPostFilter(trImageListFilter *filter)
{
    record->postFilter = filter;
}

trImageListFilter *trFImageList::AssignedPostFilter() const
{
    return record->postFilter;
}

void trFImageList::DeleteImages()
{
    // One image may sit in two entries; destroy each only once.
    std::vector<trFImage *> seen;
    for (auto &e : record->entries) {
        if (e.image && std::find(seen.begin(), seen.end(), e.image) == seen.end()) {
            seen.push_back(e.image);
            delete e.image;
        }
    }
    record->entries.clear();
}

struct trBImageList::Record {
    int count = 0;
    trBImage *images[ms_maxImages] = {};
    trFColFilter *filters[ms_maxImages] = {};
};

trBImageList::trBImageList() : record(std::make_shared<Record>()) {}

trBImageList::trBImageList(trBImage *image) : trBImageList(image, nullptr) {}

trBImageList::trBImageList(trBImage *image, trFColFilter *filter) : trBImageList()
{
    record->count = 1;
    record->images[0] = image;
    record->filters[0] = filter;
}

trBImageList::trBImageList(trBImage *image0, trFColFilter *filter0, trBImage *image1, trFColFilter *filter1)
    : trBImageList()
{
    record->count = 2;
    record->images[0] = image0;
    record->filters[0] = filter0;
    record->images[1] = image1;
    record->filters[1] = filter1;
}

void trBImageList::SetFilter(int i, trFColFilter *filter)
{
    if (i >= 0 && i < ms_maxImages)
        record->filters[i] = filter;
}

int trBImageList::NumImages() const
{
    return record->count;
}

trBImage *trBImageList::Image(int i) const
{
    return i >= 0 && i < ms_maxImages ? record->images[i] : nullptr;
}

trFColFilter *trBImageList::Filter(int i) const
{
    return i >= 0 && i < ms_maxImages ? record->filters[i] : nullptr;
}

// ---------------------------------------------------------------------------
// Writer options, writer base

trImageWriterFormatInfo::trImageWriterFormatInfo() : record(std::make_shared<Record>()) {}

int trImageWriterFormatInfo::GetExrPixelType() const
{
    return record->exrPixelType;
}
void trImageWriterFormatInfo::SetExrPixelType(int type)
{
    record->exrPixelType = type;
}
void trImageWriterFormatInfo::SetExrRequiredOptions(int type)
{
    record->exrPixelType = type;
}
int trImageWriterFormatInfo::GetTiffBitsPerChannel() const
{
    return record->tiffBitsPerChannel;
}
void trImageWriterFormatInfo::SetTiffBitsPerChannel(int bits)
{
    record->tiffBitsPerChannel = bits;
}
int trImageWriterFormatInfo::GetTiffCompression() const
{
    return record->tiffCompression;
}
void trImageWriterFormatInfo::SetTiffCompression(int compression)
{
    record->tiffCompression = compression;
}
void trImageWriterFormatInfo::SetTiffRequiredOptions(int bits, int compression)
{
    record->tiffBitsPerChannel = bits;
    record->tiffCompression = compression;
}
trFColFilter *trImageWriterFormatInfo::GetToneMapAndGammaFilter() const
{
    return record->toneMapAndGamma;
}
void trImageWriterFormatInfo::SetToneMapAndGammaFilter(trFColFilter *filter)
{
    record->toneMapAndGamma = filter;
}

trImageWriter::trImageWriter()
{
    DeclareTrue("is_image_writer");
}

trImageWriter::~trImageWriter() = default;
