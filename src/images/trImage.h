#pragma once
// Two- and three-dimensional pixel stores, their file readers and writers, the
// image lists handed to post-processing, and the asset library's preview helpers.
//
// Row 0 in memory is the bottom row of the picture; channels are always in R, G, B, A
// order. Rows are packed with no padding, channels interleaved.

#include <cstdint>
#include <functional>
#include <memory>

#include "foundation/trColour.h"
#include "foundation/trDataBlock.h"
#include "foundation/trString.h"
#include "nodes/trBase.h"
#include "render/trRenderElement.h"

class tr2Vector;
class trFColFilter;
class trImageListFilter;
class trImageWriterFormatInfo;
struct FIBITMAP;

// ---------------------------------------------------------------------------
// trImage: the untyped store. Its typed kinds below fix channels and bytes.
class trImage {
public:
    trImage();
    virtual ~trImage();

    // Each frees the old pixels first, so no content survives. A channels or
    // bytes-per-channel argument below 1 keeps the present value. Returns 1 or 0.
    long Init(int x, int y, int w, int h);
    long Init(int x, int y, int w, int h, int channels, int bytesPerChannel);
    long Init(int x, int y, int w, int h, int channels, int bytesPerChannel, bool isSigned);
    // Frees the pixels and zeroes size and offsets.
    void Cleanup();
    // Zeroes every pixel.
    void Clear();
    // Takes the other's layout, offsets and pixels. Returns 1 or 0.
    long Copy(trImage const &other);

    int OffsetX() const { return offsetX; }
    int OffsetY() const { return offsetY; }
    int Width() const { return width; }
    int Height() const { return height; }
    int EndX() const { return offsetX + width; }
    int EndY() const { return offsetY + height; }
    int NumChannels() const { return numChannels; }
    int BytesPerChannel() const { return bytesPerChannel; }
    int BytesPerPixel() const { return bytesPerPixel; }
    bool IsSigned() const { return isSigned; }
    unsigned char *Pixels() { return pixels; }
    unsigned char const *Pixels() const { return pixels; }
    // Bytes in the store (width * height * bytes per pixel).
    std::int64_t NumBytes() const { return std::int64_t(width) * height * bytesPerPixel; }

    // Carried for the writers; never applied here.
    double ValueMultiplierForWriteFile() const { return valueMultiplierForWriteFile; }
    double ValueOffsetForWriteFile() const { return valueOffsetForWriteFile; }
    void SetValueMultiplierForWriteFile(double v) { valueMultiplierForWriteFile = v; }
    void SetValueOffsetForWriteFile(double v) { valueOffsetForWriteFile = v; }

    // Raw forms index from 0; Offset forms take absolute coordinates.
    unsigned char *PixelRaw(int x, int y)
    {
        return pixels + (std::int64_t(y) * width + x) * bytesPerPixel;
    }
    unsigned char const *PixelRaw(int x, int y) const
    {
        return pixels + (std::int64_t(y) * width + x) * bytesPerPixel;
    }
    unsigned char *PixelRaw(std::int64_t index) { return pixels + index * bytesPerPixel; }
    unsigned char const *PixelRaw(std::int64_t index) const { return pixels + index * bytesPerPixel; }
    unsigned char *PixelOffset(int x, int y) { return PixelRaw(x - offsetX, y - offsetY); }
    unsigned char const *PixelOffset(int x, int y) const { return PixelRaw(x - offsetX, y - offsetY); }
    unsigned char *ScanlineRaw(int y) { return pixels + std::int64_t(y) * width * bytesPerPixel; }
    unsigned char const *ScanlineRaw(int y) const { return pixels + std::int64_t(y) * width * bytesPerPixel; }
    unsigned char *ScanlineOffset(int y) { return ScanlineRaw(y - offsetY); }
    unsigned char const *ScanlineOffset(int y) const { return ScanlineRaw(y - offsetY); }

    // One pixel of this image's layout as floats (see the conversion table in the
    // source); unsupported layouts give black, alpha 1.
    trFCol FColFromPixel(void const *pixel) const;
    trF4Col F4ColFromPixel(void const *pixel) const;

    // Separable four-tap smooth interpolation at (x, y) in pixels, offsets ignored.
    // A wrapped axis wraps by one size, otherwise clamps. No pixels: black.
    trFCol FColLookupSmooth(double x, double y, bool wrapX, bool wrapY) const;
    trF4Col F4ColLookupSmooth(double x, double y, bool wrapX, bool wrapY) const;

    // Reads any supported file; with a frame pointer the frame number is put into
    // the name first. Returns 1 or 0 (after a message).
    long ReadFile(trString const &name, long *frame = nullptr);
    // The format readers (big-endian SGI, uncompressed 24-bit Targa, MOLA elevation).
    long ReadSGI(trString const &name);
    long ReadTGA(trString const &name);
    long ReadMOLA(trString const &name);

protected:
    int offsetX = 0;
    int offsetY = 0;
    int width = 0;
    int height = 0;
    int numChannels = 0;
    int bytesPerChannel = 0;
    int bytesPerPixel = 0;
    bool isSigned = false;
    unsigned char *pixels = nullptr;
    double valueMultiplierForWriteFile = 1.0;
    double valueOffsetForWriteFile = 0.0;

    // A typed kind sets its fixed layout without allocating.
    void SetLayout(int channels, int bytesPerChannelArg, bool signedArg);

private:
    trImage(trImage const &) = delete;
    trImage &operator=(trImage const &) = delete;

    long ReadFreeImage(trString const &name);
    // A reader's way out on failure: frees the pixels, reports `message`, returns 0.
    long FailRead(trString const &message);
};

// ---------------------------------------------------------------------------
// Three floats per pixel: render buffers.
class trFImage : public trImage {
public:
    trFImage();
    ~trFImage() override;

    trFCol *FPixelRaw(int x, int y) { return reinterpret_cast<trFCol *>(PixelRaw(x, y)); }
    trFCol const *FPixelRaw(int x, int y) const { return reinterpret_cast<trFCol const *>(PixelRaw(x, y)); }
    trFCol *FPixelRaw(std::int64_t i) { return reinterpret_cast<trFCol *>(PixelRaw(i)); }
    trFCol const *FPixelRaw(std::int64_t i) const { return reinterpret_cast<trFCol const *>(PixelRaw(i)); }
    trFCol *FPixelOffset(int x, int y) { return reinterpret_cast<trFCol *>(PixelOffset(x, y)); }
    trFCol const *FPixelOffset(int x, int y) const { return reinterpret_cast<trFCol const *>(PixelOffset(x, y)); }
    trFCol *FScanlineRaw(int y) { return reinterpret_cast<trFCol *>(ScanlineRaw(y)); }
    trFCol const *FScanlineRaw(int y) const { return reinterpret_cast<trFCol const *>(ScanlineRaw(y)); }
    trFCol *FScanlineOffset(int y) { return reinterpret_cast<trFCol *>(ScanlineOffset(y)); }
    trFCol const *FScanlineOffset(int y) const { return reinterpret_cast<trFCol const *>(ScanlineOffset(y)); }

    void Fill(trFCol const &c);
    // Fills [x0, x1) x [y0, y1) in absolute coordinates, without clipping.
    void FillRectangleOffset(int x0, int y0, int x1, int y1, trFCol const &c);
    trFCol MeanCol() const;

    // Dispatch by extension: ".tif"/".tiff" to TIFF, anything else to EXR. With a
    // frame pointer the name is a printf pattern for the frame number.
    long WriteFile(trString const &name, long *frame = nullptr, trImageWriterFormatInfo *info = nullptr);
    // Through the plug-in classes "image_writer_exr" / "image_writer_tiff"; 0 when absent.
    long WriteEXR(trString const &name, trImageWriterFormatInfo *info = nullptr);
    long WriteTIFF(trString const &name, trImageWriterFormatInfo *info = nullptr);

    // Reuses the store when size and offsets match.
    trFImage &operator=(trFImage const &other);
    // Over this image's own rectangle; the argument is the front source.
    trFImage &operator+=(trFImage const &other);
    trFImage &operator-=(trFImage const &other);
    trFImage &operator*=(trFImage const &other);
    trFImage &operator/=(trFImage const &other);
};

// ---------------------------------------------------------------------------
// Four floats per pixel.
class trF4Image : public trImage {
public:
    trF4Image();
    ~trF4Image() override;

    trF4Col *F4PixelRaw(int x, int y) { return reinterpret_cast<trF4Col *>(PixelRaw(x, y)); }
    trF4Col const *F4PixelRaw(int x, int y) const { return reinterpret_cast<trF4Col const *>(PixelRaw(x, y)); }
    trF4Col *F4PixelOffset(int x, int y) { return reinterpret_cast<trF4Col *>(PixelOffset(x, y)); }
    trF4Col const *F4PixelOffset(int x, int y) const
    {
        return reinterpret_cast<trF4Col const *>(PixelOffset(x, y));
    }
    trF4Col *F4ScanlineRaw(int y) { return reinterpret_cast<trF4Col *>(ScanlineRaw(y)); }
    trF4Col const *F4ScanlineRaw(int y) const { return reinterpret_cast<trF4Col const *>(ScanlineRaw(y)); }
    trF4Col *F4ScanlineOffset(int y) { return reinterpret_cast<trF4Col *>(ScanlineOffset(y)); }
    trF4Col const *F4ScanlineOffset(int y) const { return reinterpret_cast<trF4Col const *>(ScanlineOffset(y)); }

    void Fill(trF4Col const &c);
    void FillRectangleOffset(int x0, int y0, int x1, int y1, trF4Col const &c);

    // Not supported: each reports an error and returns 0.
    long WriteFile(trString const &name, long *frame = nullptr, trImageWriterFormatInfo *info = nullptr);
    long WriteEXR(trString const &name, trImageWriterFormatInfo *info = nullptr);
    long WriteTIFF(trString const &name, trImageWriterFormatInfo *info = nullptr);
};

// ---------------------------------------------------------------------------
// Three bytes per pixel: display images.
class trBImage : public trImage {
public:
    trBImage();
    ~trBImage() override;

    trBCol *BPixelRaw(int x, int y) { return reinterpret_cast<trBCol *>(PixelRaw(x, y)); }
    trBCol const *BPixelRaw(int x, int y) const { return reinterpret_cast<trBCol const *>(PixelRaw(x, y)); }
    trBCol *BPixelOffset(int x, int y) { return reinterpret_cast<trBCol *>(PixelOffset(x, y)); }
    trBCol const *BPixelOffset(int x, int y) const { return reinterpret_cast<trBCol const *>(PixelOffset(x, y)); }
    trBCol *BScanlineRaw(int y) { return reinterpret_cast<trBCol *>(ScanlineRaw(y)); }
    trBCol const *BScanlineRaw(int y) const { return reinterpret_cast<trBCol const *>(ScanlineRaw(y)); }
    trBCol *BScanlineOffset(int y) { return reinterpret_cast<trBCol *>(ScanlineOffset(y)); }
    trBCol const *BScanlineOffset(int y) const { return reinterpret_cast<trBCol const *>(ScanlineOffset(y)); }

    void Fill(trBCol const &c);
    void FillRectangleOffset(int x0, int y0, int x1, int y1, trBCol const &c);

    // Dithers a float frame into bytes, reproducibly for a seed; the filter, when
    // given, replaces each source value first. Takes the source's size and offsets.
    void SetBytePixelsFromFloatPixels(trFImage const &source, trFColFilter const *filter, long seed);

    // Dispatch: ".tif"/".tiff" to TIFF, ".bmp" to BMP, anything else SGI.
    long WriteFile(trString const &name, long *frame = nullptr, trImageWriterFormatInfo *info = nullptr);
    long WriteBMP(trString const &name);
    long WriteSGIRGB(trString const &name);
    long WriteTIFF(trString const &name, trImageWriterFormatInfo *info = nullptr);

    trBImage &operator=(trBImage const &other);
};

// ---------------------------------------------------------------------------
// One float per pixel: heightfields and data maps.
class trFloatMap : public trImage {
public:
    trFloatMap();
    ~trFloatMap() override;

    float *FPixelRaw(int x, int y) { return reinterpret_cast<float *>(PixelRaw(x, y)); }
    float const *FPixelRaw(int x, int y) const { return reinterpret_cast<float const *>(PixelRaw(x, y)); }
    float *FPixelOffset(int x, int y) { return reinterpret_cast<float *>(PixelOffset(x, y)); }
    float const *FPixelOffset(int x, int y) const { return reinterpret_cast<float const *>(PixelOffset(x, y)); }
    float *FScanlineRaw(int y) { return reinterpret_cast<float *>(ScanlineRaw(y)); }
    float const *FScanlineRaw(int y) const { return reinterpret_cast<float const *>(ScanlineRaw(y)); }
    float *FScanlineOffset(int y) { return reinterpret_cast<float *>(ScanlineOffset(y)); }
    float const *FScanlineOffset(int y) const { return reinterpret_cast<float const *>(ScanlineOffset(y)); }

    void Fill(float v);
    void FillRectangleOffset(int x0, int y0, int x1, int y1, float v);

    // Always EXR.
    long WriteFile(trString const &name, long *frame = nullptr, trImageWriterFormatInfo *info = nullptr);
    long WriteEXR(trString const &name, trImageWriterFormatInfo *info = nullptr);
};

// ---------------------------------------------------------------------------
// A three-dimensional store (voxel caches). Its capacity grows on a 1.05 ladder and
// is kept while a new size needs between 90% and 100% of it.
class trImage3 {
public:
    trImage3() = default;
    ~trImage3();
    trImage3(trImage3 const &) = delete;
    trImage3 &operator=(trImage3 const &) = delete;

    long Init(int x, int y, int z, int w, int h, int d);
    long Init(int x, int y, int z, int w, int h, int d, int channels, int bytesPerChannel);
    long Init(int x, int y, int z, int w, int h, int d, int channels, int bytesPerChannel, bool isSigned);
    void Cleanup();
    void Clear();

    int OffsetX() const { return offsetX; }
    int OffsetY() const { return offsetY; }
    int OffsetZ() const { return offsetZ; }
    int Width() const { return width; }
    int Height() const { return height; }
    int Depth() const { return depth; }
    int NumChannels() const { return numChannels; }
    int BytesPerChannel() const { return bytesPerChannel; }
    int BytesPerPixel() const { return bytesPerPixel; }
    bool IsSigned() const { return isSigned; }
    std::int64_t Capacity() const { return capacity; }
    unsigned char *Pixels() { return pixels; }
    unsigned char const *Pixels() const { return pixels; }
    double ValueMultiplierForWriteFile() const { return valueMultiplierForWriteFile; }
    double ValueOffsetForWriteFile() const { return valueOffsetForWriteFile; }
    void SetValueMultiplierForWriteFile(double v) { valueMultiplierForWriteFile = v; }
    void SetValueOffsetForWriteFile(double v) { valueOffsetForWriteFile = v; }

    unsigned char *PixelRaw(int x, int y, int z)
    {
        return pixels + ((std::int64_t(z) * height + y) * width + x) * bytesPerPixel;
    }
    unsigned char const *PixelRaw(int x, int y, int z) const
    {
        return pixels + ((std::int64_t(z) * height + y) * width + x) * bytesPerPixel;
    }
    unsigned char *PixelOffset(int x, int y, int z) { return PixelRaw(x - offsetX, y - offsetY, z - offsetZ); }
    unsigned char const *PixelOffset(int x, int y, int z) const
    {
        return PixelRaw(x - offsetX, y - offsetY, z - offsetZ);
    }
    unsigned char *ScanlineRaw(int y, int z) { return PixelRaw(0, y, z); }
    unsigned char const *ScanlineRaw(int y, int z) const { return PixelRaw(0, y, z); }
    unsigned char *ScanlineOffset(int y, int z) { return ScanlineRaw(y - offsetY, z - offsetZ); }
    unsigned char const *ScanlineOffset(int y, int z) const { return ScanlineRaw(y - offsetY, z - offsetZ); }

    trFCol FColFromPixel(void const *pixel) const;
    trF4Col F4ColFromPixel(void const *pixel) const;
    // Trilinear, centres at integer + 0.5 (u = x - 0.5).
    trF4Col F4ColLookupLinear(double x, double y, double z, bool wrapX, bool wrapY, bool wrapZ) const;
    trFCol FColLookupSmooth(double x, double y, double z, bool wrapX, bool wrapY, bool wrapZ) const;
    trF4Col F4ColLookupSmooth(double x, double y, double z, bool wrapX, bool wrapY, bool wrapZ) const;

private:
    int offsetX = 0;
    int offsetY = 0;
    int offsetZ = 0;
    int width = 0;
    int height = 0;
    int depth = 0;
    int numChannels = 0;
    int bytesPerChannel = 0;
    int bytesPerPixel = 0;
    bool isSigned = false;
    unsigned char *pixels = nullptr;
    std::int64_t capacity = 0;
    double valueMultiplierForWriteFile = 1.0;
    double valueOffsetForWriteFile = 0.0;
};

// ---------------------------------------------------------------------------
// The float element images of a render target. A handle: copies share one record.
// The list does not own its images, except through DeleteImages.
struct trFImageListEntry {
    trFImage *image = nullptr;
    trRenderElementType type = svRgb;
    double exposure = 1.0;
    bool allowsFilters = true;
    bool shouldOutput = true;
};

class trFImageList {
public:
    trFImageList();
    // One entry of type svRgb, should-output set.
    trFImageList(trFImage *image, double exposure, bool allowsFilters);
    // Entries of svRgb then svAlpha, both should-output, with the same exposure and flag.
    trFImageList(trFImage *rgb, trFImage *alpha, double exposure, bool allowsFilters);

    void AddImage(trFImage *image, trRenderElementType type, double exposure, bool allowsFilters,
                  bool shouldOutput);
    std::uint64_t NumImages() const;
    trFImage *Image(std::uint64_t i) const;
    trRenderElementType Type(std::uint64_t i) const;
    // The element's name ("svRgb", ...), "" for an unnamed type or a bad index.
    char const *TypeString(std::uint64_t i) const;
    double Exposure(std::uint64_t i) const;
    bool AllowsFilters(std::uint64_t i) const;
    bool ShouldOutput(std::uint64_t i) const;
    // The first entry of the type; false when absent.
    bool FindType(trRenderElementType type, std::uint64_t &index) const;
    void AssignPostFilter(trImageListFilter *filter);
    trImageListFilter *AssignedPostFilter() const;
    // Destroys every image and empties the list.
    void DeleteImages();

private:
    struct Record;
    std::shared_ptr<Record> record;
};

// The byte images of a render target: up to 16, each with its display filter
// (null means identity). A handle: copies share one record.
class trBImageList {
public:
    static constexpr int ms_maxImages = 16;

    trBImageList();
    explicit trBImageList(trBImage *image);
    trBImageList(trBImage *image, trFColFilter *filter);
    trBImageList(trBImage *image0, trFColFilter *filter0, trBImage *image1, trFColFilter *filter1);

    // Ignored for an index outside 0..15.
    void SetFilter(int i, trFColFilter *filter);
    int NumImages() const;
    trBImage *Image(int i) const;
    trFColFilter *Filter(int i) const;

private:
    struct Record;
    std::shared_ptr<Record> record;
};

// ---------------------------------------------------------------------------
// Options for the plug-in writers. A handle: copies share one record. The values
// mean something only to the writers.
class trImageWriterFormatInfo {
public:
    trImageWriterFormatInfo();

    int GetExrPixelType() const;
    void SetExrPixelType(int type);
    void SetExrRequiredOptions(int type);
    int GetTiffBitsPerChannel() const;
    void SetTiffBitsPerChannel(int bits);
    int GetTiffCompression() const;
    void SetTiffCompression(int compression);
    void SetTiffRequiredOptions(int bits, int compression);
    trFColFilter *GetToneMapAndGammaFilter() const;
    void SetToneMapAndGammaFilter(trFColFilter *filter);

private:
    struct Record {
        int exrPixelType = 1;
        int tiffBitsPerChannel = 0;
        int tiffCompression = 0;
        trFColFilter *toneMapAndGamma = nullptr;
    };
    std::shared_ptr<Record> record;
};

// Base of the plug-in image writers (classes "image_writer_exr", "image_writer_tiff").
class trImageWriter : public trBase {
public:
    trImageWriter();
    ~trImageWriter() override;
    // Nonzero on success.
    virtual long WriteImage(trImage *image, trString const &path, trImageWriterFormatInfo *info) = 0;
};

// ---------------------------------------------------------------------------
// trDataBlock, the byte block that carries encoded images through memory, is in
// foundation/trDataBlock.h.

// ---------------------------------------------------------------------------
// Writes the readable formats, one "description - extensions<br />" line each.
// Returns false when the file can't be opened.
bool trWriteSupportedImageFormats(trString const &path);

// Asset library helpers. Each works on FreeImage bitmaps; the caller frees results
// with trLibraryDestroyBitmap. Previews and thumbnails are 512 pixels on the long side.
using trLibraryAddOption = long;
constexpr int trLibraryPreviewSize = 512;

// Hand a file to the host's asset library (kinds 2, 3, 4); false without a host.
bool trLibraryAddHeightfield(trString const &path, trLibraryAddOption option);
bool trLibraryAddImage(trString const &path, trLibraryAddOption option);
bool trLibraryAddObject(trString const &path, trLibraryAddOption option);

bool trLibraryProcessImageForPreview(trString const &path, FIBITMAP *&bitmap);
// Bytes are 32-bit BGRA in FreeImage's row order.
bool trLibraryPreviewBytesToBitmap(unsigned char const *bytes, int w, int h, FIBITMAP *&bitmap);
// JPEG 2000 code stream.
bool trLibrarySaveImageForPreview(trString const &path, FIBITMAP *bitmap, bool flag);
// Writes name + "_mini." + extension beside the path, longer side `size`.
bool trLibrarySaveImageForMiniPreview(trString const &path, FIBITMAP *bitmap, int size);
bool trLibraryCanFreeImageOpenFile(trString const &path);
bool trLibraryGetImageSize(trString const &path, tr2Vector &size);
bool trLibraryGetImageSize(FIBITMAP *bitmap, tr2Vector &size);
bool trLibraryMakeThumbnailImage(FIBITMAP *bitmap, FIBITMAP *&result, bool square);
bool trLibraryLoadAndShrinkPreviewImage(trString const &path, int size, FIBITMAP *&bitmap);
bool trLibraryLoadBitmap(trString const &path, FIBITMAP *&bitmap);
void trLibraryDestroyBitmap(FIBITMAP *bitmap);
// `type` must be "jpeg".
bool trLibrarySaveImageToMemory(FIBITMAP *bitmap, trString const &type, trDataBlock &block, long &size);
bool trLibraryReadImageFromMemory(trDataBlock const &block, long size, FIBITMAP *&bitmap);
// Calls back once per pixel: x, y (0 = top row), red, green, blue, alpha.
using trLibraryPixelCallback =
    std::function<void(int x, int y, unsigned char r, unsigned char g, unsigned char b, unsigned char a)>;
bool trLibraryCopyImage(FIBITMAP *bitmap, trLibraryPixelCallback const &pixelCallback);
void trLibraryFlipImageVertical(FIBITMAP *bitmap);
