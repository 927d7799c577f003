#pragma once
// The one place that talks to FreeImage. Everything else in the library sees only
// these calls (and the opaque FIBITMAP of the asset library helpers).

#include <string>
#include <utility>
#include <vector>

class trString;
class trImage;
struct FIBITMAP;

namespace trFreeImageAdapter {

// Routes FreeImage's own messages to standard output; idempotent.
void InstallOutputHandler();

// Loads any file FreeImage opens into the image (layout from the file's pixel type,
// rows in FreeImage's order, BGR turned to RGB). Returns 1 or 0 after a message.
long ReadIntoImage(trString const &name, trImage &image);

// Pixel count above which a file is refused before its pixels are decoded (default
// 2^28, a 16384 x 16384 picture). Settable so that a fuzzing run can stay small.
long long MaxPixels();
void SetMaxPixels(long long pixels);

// The readable formats: description and extension list, in FreeImage's order.
std::vector<std::pair<std::string, std::string>> ReadableFormats();

// True when the content or the name identifies a format FreeImage knows.
bool CanOpen(trString const &path);
// Loads with flags 0 (or header only with headerOnly where the format allows it).
FIBITMAP *Load(trString const &path, bool headerOnly = false);
void Unload(FIBITMAP *bitmap);
int Width(FIBITMAP *bitmap);
int Height(FIBITMAP *bitmap);
int BitsPerPixel(FIBITMAP *bitmap);
// Thumbnail no larger than maxSize on its long side, converted to a standard type.
FIBITMAP *Thumbnail(FIBITMAP *bitmap, int maxSize);
// Bicubic rescale.
FIBITMAP *Rescale(FIBITMAP *bitmap, int w, int h);
FIBITMAP *Clone(FIBITMAP *bitmap);
// A 32-bit bitmap from BGRA bytes in FreeImage's row order.
FIBITMAP *FromBgraBytes(unsigned char const *bytes, int w, int h);
// A w x h 32-bit bitmap filled with (0, 0, 0, alpha) with `source` pasted at (left, top).
FIBITMAP *PasteOnCanvas(FIBITMAP *source, int w, int h, int left, int top, unsigned char alpha);
// JPEG 2000 code stream; flags as FreeImage takes them.
bool SaveJ2K(FIBITMAP *bitmap, trString const &path, int flags);
// Encodes as JPEG (24-bit, normal quality) into bytes.
bool EncodeJpeg(FIBITMAP *bitmap, std::vector<unsigned char> &bytes);
// Decodes bytes of any format the content identifies.
FIBITMAP *DecodeMemory(unsigned char const *bytes, long size);
// Calls back per pixel with y = 0 the top row; 24- and 32-bit read directly, other
// depths converted to 32 bits first.
bool ForEachPixel(FIBITMAP *bitmap,
                  void (*visit)(void *context, int x, int y, unsigned char r, unsigned char g, unsigned char b,
                                unsigned char a),
                  void *context);
void FlipVertical(FIBITMAP *bitmap);

} // namespace trFreeImageAdapter
