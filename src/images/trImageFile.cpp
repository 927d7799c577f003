// Choosing a reader or writer by a file's name.
#include <cctype>
#include <cstdio>
#include <string>

#include "foundation/trMessages.h"
#include "images/trImage.h"
#include "nodes/trClassPool.h"

namespace {

constexpr long kMaxNameLength = 16000;

// The last n characters in lower case, or "" when the name is shorter.
std::string LastLower(trString const &name, long n)
{
    if (!name.chars || name.length < n)
        return std::string();
    std::string tail(name.chars + name.length - n, std::size_t(n));
    for (char &c : tail)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return tail;
}

// Puts the frame into a printf-style name. Only integer conversions ("%d", "%04d",
// "%ld", "%i") take the frame and "%%" gives "%"; any other "%" is copied as it
// stands, so a name can never drive printf with arguments it doesn't have.
trString FrameName(trString const &pattern, long frame)
{
    std::string out;
    char const *p = pattern.chars ? pattern.chars : "";
    while (*p) {
        if (*p != '%') {
            out += *p++;
            continue;
        }
        if (p[1] == '%') {
            out += '%';
            p += 2;
            continue;
        }
        char const *q = p + 1;
        std::string flags;
        while (*q == '0' || *q == '-' || *q == '+' || *q == ' ')
            flags += *q++;
        int digits = 0;
        std::string widthText;
        while (std::isdigit(static_cast<unsigned char>(*q)) && digits < 3) {
            widthText += *q++;
            ++digits;
        }
        while (*q == 'l')
            ++q;
        if (*q == 'd' || *q == 'i') {
            std::string spec = "%" + flags + widthText + "ld";
            char buffer[64];
            std::snprintf(buffer, sizeof buffer, spec.c_str(), frame);
            out += buffer;
            p = q + 1;
        } else {
            out += *p++;
        }
    }
    return trString(out);
}

trString NameForWrite(trString const &name, long *frame)
{
    return frame ? FrameName(name, *frame) : name;
}

// A write through a writer plug-in that failed because no such plug-in is loaded says so.
long NamingMissingWriter(long result, char const *className, char const *format, trString const &name)
{
    long id = -1;
    if (!result && !trClasses.FindClassIdFromClassName(id, className))
        trError(trString("WriteFile: No ") + format + " writer is loaded (plug-in class " + className +
                "); load the image writer plug-ins to write " + name);
    return result;
}

long ThroughExr(long result, trString const &name)
{
    return NamingMissingWriter(result, "image_writer_exr", "EXR", name);
}

long ThroughTiff(long result, trString const &name)
{
    return NamingMissingWriter(result, "image_writer_tiff", "TIFF", name);
}

} // namespace

long trImage::ReadFile(trString const &nameArg, long *frame)
{
    if (nameArg.length > kMaxNameLength) {
        trError("trImage ReadFile: Filename is longer than 16000 characters");
        return 0;
    }
    trString name = frame ? nameArg.WithFrameNumber(*frame) : nameArg;
    trOutMsg(trString("trImage attempting to read file ") + name);
    if (trCallBackLoadUserResource && !trCallBackLoadUserResource(&name)) {
        trError(trString("trImage : Cannot locate file ") + name);
        return 0;
    }
    std::string tail = LastLower(name, 3);
    if (tail == ".bw" || tail == "sgi" || tail == "rgb" || tail == "gba")
        return ReadSGI(name);
    if (tail == "img")
        return ReadMOLA(name);
    return ReadFreeImage(name);
}

long trFImage::WriteFile(trString const &nameArg, long *frame, trImageWriterFormatInfo *info)
{
    if (!pixels)
        return 0;
    trString name = NameForWrite(nameArg, frame);
    trOutMsg(trString("Attempting to write image: ") + name);
    std::string tail = LastLower(name, 4);
    if (tail == ".exr")
        return ThroughExr(WriteEXR(name, info), name);
    if (tail == ".tif" || name.EndsWith(".tiff", false))
        return ThroughTiff(WriteTIFF(name, info), name);
    return ThroughExr(WriteEXR(name, info), name);
}

long trBImage::WriteFile(trString const &nameArg, long *frame, trImageWriterFormatInfo *info)
{
    if (!pixels)
        return 0;
    trString name = NameForWrite(nameArg, frame);
    trOutMsg(trString("Attempting to write image: ") + name);
    std::string tail = LastLower(name, 4);
    if (tail == ".tif")
        return ThroughTiff(WriteTIFF(name, info), name);
    if (tail == ".bmp")
        return WriteBMP(name);
    if (name.EndsWith(".tiff", false))
        return ThroughTiff(WriteTIFF(name, info), name);
    return WriteSGIRGB(name);
}

long trFloatMap::WriteFile(trString const &nameArg, long *frame, trImageWriterFormatInfo *info)
{
    if (!pixels)
        return 0;
    trString name = NameForWrite(nameArg, frame);
    trOutMsg(trString("Attempting to write image: ") + name);
    return ThroughExr(WriteEXR(name, info), name);
}

long trF4Image::WriteFile(trString const &, long *, trImageWriterFormatInfo *)
{
    trError("trF4Image::WriteFile not implemented");
    return 0;
}

long trF4Image::WriteEXR(trString const &, trImageWriterFormatInfo *)
{
    trError("trF4Image::WriteEXR not implemented");
    return 0;
}

long trF4Image::WriteTIFF(trString const &, trImageWriterFormatInfo *)
{
    trError("trF4Image::WriteTIFF not implemented");
    return 0;
}
