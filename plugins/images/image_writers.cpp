// The image writer plug-in: the classes image_writer_exr (OpenEXR) and
// image_writer_tiff (libtiff), through which trFImage, trBImage and trFloatMap write
// EXR and TIFF files. Built like any third party's module, against the public headers.
//
// Format options (trImageWriterFormatInfo) as this module reads them:
//   ExrPixelType      1 half (the default), 2 float; the values of Imf::PixelType.
//   TiffBitsPerChannel 8 or 16 (unsigned integers, 0..1 scaled to the full range),
//                     32 (IEEE float); 0 picks the source's own depth.
//   TiffCompression   0 none, 1 LZW, 2 Deflate, 3 PackBits.
//   Tone map filter   applied to the colour of each pixel before quantising to 8 or 16
//                     bits; EXR and float TIFF stay linear and ignore it.
// Every sample is first mapped by the image's value multiplier and offset
// (value * multiplier + offset), which are 1 and 0 unless a caller set them.
// Row 0 of our images is the bottom row; both formats store the top row first.

#include "foundation/trColourFilters.h"
#include "foundation/trMessages.h"
#include "images/trImage.h"
#include "images/trImageIOText.h"
#include "nodes/trPlugin.h"

#include <Imath/half.h>
#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfOutputFile.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <vector>

namespace {

// One sample of any of our layouts as a float, by the library's conversion table.
inline float SampleToFloat(trImage const &image, unsigned char const *pixel, int channel)
{
    switch (image.BytesPerChannel()) {
    case 1:
        return pixel[channel] * 0.003921569f;
    case 2: {
        std::uint16_t raw;
        std::memcpy(&raw, pixel + 2 * channel, 2);
        return image.IsSigned() ? float(std::int16_t(raw)) * 1.5259022e-5f : float(raw) * 1.5259022e-5f;
    }
    default: {
        float value;
        std::memcpy(&value, pixel + 4 * channel, 4);
        return value;
    }
    }
}

bool IsIdentityMapping(trImage const &image)
{
    return image.ValueMultiplierForWriteFile() == 1.0 && image.ValueOffsetForWriteFile() == 0.0;
}

// One row of the image as floats, channels interleaved, with the value mapping applied.
void RowToFloats(trImage const &image, int y, float *out)
{
    double const multiplier = image.ValueMultiplierForWriteFile();
    double const offset = image.ValueOffsetForWriteFile();
    bool const identity = IsIdentityMapping(image);
    int const channels = image.NumChannels();
    unsigned char const *pixel = image.ScanlineRaw(y);
    if (identity && image.BytesPerChannel() == 4) {
        std::memcpy(out, pixel, std::size_t(image.Width()) * image.BytesPerPixel());
        return;
    }
    for (int x = 0; x < image.Width(); ++x, pixel += image.BytesPerPixel())
        for (int c = 0; c < channels; ++c) {
            float const v = SampleToFloat(image, pixel, c);
            *out++ = identity ? v : float(v * multiplier + offset);
        }
}

bool CheckImage(char const *writer, trImage const *image, trString const &path)
{
    if (!image || !image->Pixels() || image->Width() <= 0 || image->Height() <= 0) {
        trError(trJoin(writer, ": image is null! Nothing written to ", path));
        return false;
    }
    int const channels = image->NumChannels();
    int const bytes = image->BytesPerChannel();
    if (channels < 1 || channels > 4 || (bytes != 1 && bytes != 2 && bytes != 4)) {
        trError(trJoin(writer, ": unsupported image layout (", channels, " channels of ", bytes,
                     " bytes); nothing written to ", path));
        return false;
    }
    return true;
}

// ---------------------------------------------------------------------------------
// EXR

class ExrWriter : public trImageWriter {
public:
    long WriteImage(trImage *image, trString const &path, trImageWriterFormatInfo *info) override
    {
        if (!CheckImage("image_writer_exr", image, path))
            return 0;
        int const pixelTypeValue = info ? info->GetExrPixelType() : 1;
        if (pixelTypeValue != Imf::HALF && pixelTypeValue != Imf::FLOAT) {
            trError(trJoin("image_writer_exr: unsupported EXR pixel type ", pixelTypeValue,
                         " (1 half, 2 float); nothing written to ", path));
            return 0;
        }
        try {
            return Write(*image, path, Imf::PixelType(pixelTypeValue));
        } catch (std::exception const &e) {
            trError(trJoin("image_writer_exr: Unable to write file ", path, ": ", e.what()));
        } catch (...) {
            trError(trJoin("image_writer_exr: Unable to write file ", path));
        }
        return 0;
    }

private:
    static long Write(trImage const &image, trString const &path, Imf::PixelType fileType)
    {
        int const w = image.Width();
        int const h = image.Height();
        int const channels = image.NumChannels();
        static char const *const kNames[4][4] = {
            {"Y"}, {"Y", "A"}, {"R", "G", "B"}, {"R", "G", "B", "A"}};

        Imf::Header header(w, h);
        for (int c = 0; c < channels; ++c)
            header.channels().insert(kNames[channels - 1][c], Imf::Channel(fileType));
        Imf::OutputFile file(path.chars, header);

        // The file wants its own sample type in the frame buffer, so rows go through a
        // buffer of a few lines at a time: the file's line 0 is our top row, h - 1.
        int const chunk = 64;
        std::size_t const sampleSize = fileType == Imf::HALF ? sizeof(Imath::half) : sizeof(float);
        std::size_t const xStride = sampleSize * std::size_t(channels);
        std::size_t const yStride = xStride * std::size_t(w);
        std::vector<char> buffer(yStride * chunk);
        std::vector<float> row(std::size_t(w) * channels);
        for (int y0 = 0; y0 < h; y0 += chunk) {
            int const lines = std::min(chunk, h - y0);
            for (int i = 0; i < lines; ++i) {
                RowToFloats(image, h - 1 - (y0 + i), row.data());
                char *out = buffer.data() + yStride * std::size_t(i);
                if (fileType == Imf::HALF) {
                    Imath::half *halves = reinterpret_cast<Imath::half *>(out);
                    for (std::size_t k = 0; k < row.size(); ++k)
                        halves[k] = Imath::half(row[k]);
                } else {
                    std::memcpy(out, row.data(), yStride);
                }
            }
            // The slices address absolute lines: the base stands y0 lines before the buffer.
            char *base = reinterpret_cast<char *>(reinterpret_cast<std::uintptr_t>(buffer.data()) -
                                                  std::uintptr_t(y0) * yStride);
            Imf::FrameBuffer frameBuffer;
            for (int c = 0; c < channels; ++c)
                frameBuffer.insert(kNames[channels - 1][c],
                                   Imf::Slice(fileType, base + sampleSize * std::size_t(c), xStride, yStride));
            file.setFrameBuffer(frameBuffer);
            file.writePixels(lines);
        }
        return 1;
    }
};

// ---------------------------------------------------------------------------------
// TIFF

class TiffCloser {
public:
    explicit TiffCloser(TIFF *t) : tiff(t) {}
    ~TiffCloser()
    {
        if (tiff)
            TIFFClose(tiff);
    }
    TiffCloser(TiffCloser const &) = delete;
    TiffCloser &operator=(TiffCloser const &) = delete;

private:
    TIFF *tiff;
};

class TiffWriter : public trImageWriter {
public:
    long WriteImage(trImage *image, trString const &path, trImageWriterFormatInfo *info) override
    {
        if (!CheckImage("image_writer_tiff", image, path))
            return 0;
        int bits = info ? info->GetTiffBitsPerChannel() : 0;
        if (bits == 0)
            bits = image->BytesPerChannel() * 8;
        if (bits != 8 && bits != 16 && bits != 32) {
            trError(trJoin("image_writer_tiff: unsupported bits per channel ", bits, " (8, 16 or 32); nothing written to ",
                         path));
            return 0;
        }
        int const compressionValue = info ? info->GetTiffCompression() : 0;
        static std::uint16_t const kCompression[] = {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE,
                                                     COMPRESSION_PACKBITS};
        if (compressionValue < 0 || compressionValue > 3) {
            trError(trJoin("image_writer_tiff: unsupported compression ", compressionValue,
                         " (0 none, 1 LZW, 2 Deflate, 3 PackBits); nothing written to ", path));
            return 0;
        }
        trFColFilter const *filter = (info && bits != 32) ? info->GetToneMapAndGammaFilter() : nullptr;
        return Write(*image, path, bits, kCompression[compressionValue], filter);
    }

private:
    static long Write(trImage const &image, trString const &path, int bits, std::uint16_t compression,
                      trFColFilter const *filter)
    {
        TIFF *tiff = TIFFOpen(path.chars, "w");
        if (!tiff) {
            trError(trJoin("image_writer_tiff: Unable to open file ", path,
                         "\n\nPossible causes: folder doesn't exist or disk full."));
            return 0;
        }
        TiffCloser closer(tiff);
        int const w = image.Width();
        int const h = image.Height();
        int const channels = image.NumChannels();

        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, std::uint32_t(w));
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, std::uint32_t(h));
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, std::uint16_t(channels));
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, std::uint16_t(bits));
        TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, std::uint16_t(bits == 32 ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT));
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, std::uint16_t(channels >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK));
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, std::uint16_t(PLANARCONFIG_CONTIG));
        TIFFSetField(tiff, TIFFTAG_ORIENTATION, std::uint16_t(ORIENTATION_TOPLEFT));
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
        if (channels == 2 || channels == 4) {
            std::uint16_t const extra[1] = {EXTRASAMPLE_UNASSALPHA};
            TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, std::uint16_t(1), extra);
        }
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));

        std::size_t const samples = std::size_t(w) * channels;
        std::vector<float> floats(samples);
        std::vector<unsigned char> out(samples * std::size_t(bits / 8));
        // Same depth, no mapping and no filter: the bytes go out as they are.
        bool const verbatim = bits == image.BytesPerChannel() * 8 && !image.IsSigned() && !filter &&
                              IsIdentityMapping(image);
        for (int row = 0; row < h; ++row) {
            int const y = h - 1 - row;
            if (verbatim) {
                std::memcpy(out.data(), image.ScanlineRaw(y), out.size());
            } else {
                RowToFloats(image, y, floats.data());
                if (filter)
                    ApplyFilter(*filter, floats.data(), w, channels);
                Quantise(floats.data(), samples, bits, out.data());
            }
            if (TIFFWriteScanline(tiff, out.data(), std::uint32_t(row), 0) < 0) {
                trError(trJoin("image_writer_tiff: Unable to write file ", path));
                return 0;
            }
        }
        return 1;
    }

    // The filter maps colours; a grey image is filtered as a grey colour and keeps red.
    static void ApplyFilter(trFColFilter const &filter, float *row, int w, int channels)
    {
        for (int x = 0; x < w; ++x, row += channels) {
            if (channels >= 3) {
                trFCol c;
                c.r = row[0];
                c.g = row[1];
                c.b = row[2];
                c = filter(c);
                row[0] = c.r;
                row[1] = c.g;
                row[2] = c.b;
            } else {
                trFCol c;
                c.r = c.g = c.b = row[0];
                row[0] = filter(c).r;
            }
        }
    }

    static void Quantise(float const *in, std::size_t count, int bits, unsigned char *out)
    {
        if (bits == 32) {
            std::memcpy(out, in, count * sizeof(float));
            return;
        }
        double const top = bits == 8 ? 255.0 : 65535.0;
        for (std::size_t i = 0; i < count; ++i) {
            // NaN goes to 0 with the negatives.
            double x = in[i];
            x = x > 0.0 ? (x < 1.0 ? x : 1.0) : 0.0;
            double const v = x * top + 0.5;
            if (bits == 8) {
                out[i] = static_cast<unsigned char>(v);
            } else {
                std::uint16_t const s = static_cast<std::uint16_t>(v);
                std::memcpy(out + 2 * i, &s, 2);
            }
        }
    }
};

template <class T> trBase *Create() { return new T; }
void Destroy(trBase *node) { delete node; }

} // namespace

OSTREL_PLUGIN_EXPORT long trPluginStartup(trPluginStartupInfo *info)
{
    // The library's own author name keeps the class names plain, as the image types
    // look them up.
    trPluginToken token(info, trPluginSdkVersion(), "Marrowvane");
    long ok = 1;
    ok &= token.AddClass("image_writer", "image_writer_exr", Create<ExrWriter>, Destroy, "EXR image writer") != 0;
    ok &= token.AddClass("image_writer", "image_writer_tiff", Create<TiffWriter>, Destroy, "TIFF image writer") != 0;
    return ok;
}
