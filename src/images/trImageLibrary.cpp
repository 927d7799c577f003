// The asset library's helpers: handing files to the host, previews, thumbnails and
// small encodings, plus the list of readable formats.
#include <cmath>
#include <cstring>
#include <fstream>
#include <map>
#include <vector>

#include "foundation/trMessages.h"
#include "foundation/trNaturalOrder.h"
#include "foundation/trVector.h"
#include "images/trFreeImageAdapter.h"
#include "images/trImage.h"

namespace fi = trFreeImageAdapter;

namespace {

// FreeImage's save flag for JPEG 2000 previews.
constexpr int kPreviewSaveFlags = 1;

bool AddToLibrary(unsigned long kind, trString const &path, trLibraryAddOption option)
{
    if (!trCallBackLibraryAddItem)
        return false;
    long const opt = option;
    return trCallBackLibraryAddItem(kind, path, opt);
}

} // namespace

bool trWriteSupportedImageFormats(trString const &path)
{
    if (!path.chars || !*path.chars)
        return false;
    std::ofstream out(path.chars);
    if (!out)
        return false;
    std::map<trString, trString, trNaturalOrderSort_Less> formats;
    for (auto const &entry : fi::ReadableFormats())
        formats.emplace(trString(entry.first), trString(entry.second)); // the first list of a description stays
    formats[trString("SGI Image Format")] = trString("sgi,rgb,bw,gba");
    for (auto const &entry : formats)
        out << entry.first.chars << " - " << entry.second.chars << "<br />\n";
    return bool(out);
}

bool trLibraryAddHeightfield(trString const &path, trLibraryAddOption option)
{
    return AddToLibrary(2, path, option);
}

bool trLibraryAddImage(trString const &path, trLibraryAddOption option)
{
    return AddToLibrary(3, path, option);
}

bool trLibraryAddObject(trString const &path, trLibraryAddOption option)
{
    return AddToLibrary(4, path, option);
}

bool trLibraryProcessImageForPreview(trString const &path, FIBITMAP *&bitmap)
{
    bitmap = nullptr;
    FIBITMAP *full = fi::Load(path);
    if (!full)
        return false;
    bitmap = fi::Thumbnail(full, trLibraryPreviewSize);
    fi::Unload(full);
    return bitmap != nullptr;
}

bool trLibraryPreviewBytesToBitmap(unsigned char const *bytes, int w, int h, FIBITMAP *&bitmap)
{
    bitmap = nullptr;
    FIBITMAP *full = fi::FromBgraBytes(bytes, w, h);
    if (!full)
        return false;
    bitmap = fi::Thumbnail(full, trLibraryPreviewSize);
    fi::Unload(full);
    return bitmap != nullptr;
}

bool trLibrarySaveImageForPreview(trString const &path, FIBITMAP *bitmap, bool flag)
{
    return fi::SaveJ2K(bitmap, path, flag ? kPreviewSaveFlags : 0);
}

bool trLibrarySaveImageForMiniPreview(trString const &path, FIBITMAP *bitmap, int size)
{
    if (!bitmap || size <= 0)
        return false;
    double w = fi::Width(bitmap), h = fi::Height(bitmap);
    auto guarded = [](double d) { return std::fabs(d) < 1e-6 ? (d < 0.0 ? -1e-6 : 1e-6) : d; };
    int newW, newH;
    if (w >= h) {
        newW = size;
        newH = int(double(size) * (h / guarded(w)));
    } else {
        newH = size;
        newW = int(double(size) * (w / guarded(h)));
    }
    // A sliver still keeps one pixel.
    newW = newW < 1 ? 1 : newW;
    newH = newH < 1 ? 1 : newH;
    FIBITMAP *small = fi::Rescale(bitmap, newW, newH);
    if (!small)
        return false;
    // name + "_mini." + extension, beside the original.
    trString extension = path.Extension();
    trString stem = path;
    if (extension.length > 0)
        stem = path.SubString(0, int(path.length - extension.length - 1));
    trString miniPath = stem + "_mini." + extension;
    bool ok = fi::SaveJ2K(small, miniPath, kPreviewSaveFlags);
    fi::Unload(small);
    return ok;
}

bool trLibraryCanFreeImageOpenFile(trString const &path)
{
    return fi::CanOpen(path);
}

bool trLibraryGetImageSize(trString const &path, tr2Vector &size)
{
    FIBITMAP *bitmap = fi::Load(path, true);
    if (!bitmap)
        return false;
    bool ok = trLibraryGetImageSize(bitmap, size);
    fi::Unload(bitmap);
    return ok;
}

bool trLibraryGetImageSize(FIBITMAP *bitmap, tr2Vector &size)
{
    if (!bitmap)
        return false;
    size = tr2Vector(fi::Width(bitmap), fi::Height(bitmap));
    return true;
}

bool trLibraryMakeThumbnailImage(FIBITMAP *bitmap, FIBITMAP *&result, bool square)
{
    result = nullptr;
    FIBITMAP *thumb = fi::Thumbnail(bitmap, trLibraryPreviewSize);
    if (!thumb)
        return false;
    int w = fi::Width(thumb), h = fi::Height(thumb);
    if (square && (w != trLibraryPreviewSize || h != trLibraryPreviewSize)) {
        result = fi::PasteOnCanvas(thumb, trLibraryPreviewSize, trLibraryPreviewSize,
                                   (trLibraryPreviewSize - w) / 2, (trLibraryPreviewSize - h) / 2, 255);
        fi::Unload(thumb);
    } else if (square) {
        result = thumb;
    } else {
        result = fi::Clone(thumb);
        fi::Unload(thumb);
    }
    return result != nullptr;
}

bool trLibraryLoadAndShrinkPreviewImage(trString const &path, int size, FIBITMAP *&bitmap)
{
    bitmap = nullptr;
    FIBITMAP *preview = nullptr;
    if (!trLibraryProcessImageForPreview(path, preview))
        return false;
    bitmap = fi::Rescale(preview, size, size);
    fi::Unload(preview);
    return bitmap != nullptr;
}

bool trLibraryLoadBitmap(trString const &path, FIBITMAP *&bitmap)
{
    bitmap = fi::Load(path);
    return bitmap != nullptr;
}

void trLibraryDestroyBitmap(FIBITMAP *bitmap)
{
    fi::Unload(bitmap);
}

bool trLibrarySaveImageToMemory(FIBITMAP *bitmap, trString const &type, trDataBlock &block, long &size)
{
    size = 0;
    if (!bitmap || !(type == trString("jpeg")))
        return false;
    std::vector<unsigned char> bytes;
    if (!fi::EncodeJpeg(bitmap, bytes))
        return false;
    unsigned char *data = new unsigned char[bytes.size()];
    std::memcpy(data, bytes.data(), bytes.size());
    block.Reset(data);
    size = long(bytes.size());
    return true;
}

bool trLibraryReadImageFromMemory(trDataBlock const &block, long size, FIBITMAP *&bitmap)
{
    bitmap = fi::DecodeMemory(block.Data(), size);
    return bitmap != nullptr;
}

bool trLibraryCopyImage(FIBITMAP *bitmap, trLibraryPixelCallback const &pixelCallback)
{
    if (!pixelCallback)
        return false;
    auto visit = [](void *context, int x, int y, unsigned char r, unsigned char g, unsigned char b,
                    unsigned char a) { (*static_cast<trLibraryPixelCallback const *>(context))(x, y, r, g, b, a); };
    return fi::ForEachPixel(bitmap, visit, const_cast<trLibraryPixelCallback *>(&pixelCallback));
}

void trLibraryFlipImageVertical(FIBITMAP *bitmap)
{
    fi::FlipVertical(bitmap);
}
