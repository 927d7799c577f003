// EXR and TIFF files are written by plug-in classes: the library itself carries no
// encoder for either, only the hand-over to whichever module registered the writer.

#include "images/trImage.h"

#include "foundation/trMessages.h"
#include "images/trImageIOText.h"
#include "nodes/trClassPool.h"

namespace {

// Creates the writer class, lets it write, destroys it. A class that isn't registered
// gives 0 without a word here: WriteFile, which a user's save goes through, names the
// missing plug-in.
long WriteThroughPlugin(char const *operation, char const *className, char const *, trImage *image,
                        trString const &name, trImageWriterFormatInfo *info)
{
    long id = -1;
    if (!trClasses.FindClassIdFromClassName(id, className))
        return 0;
    trBase *node = trCreateObject(className, nullptr, 0);
    if (!node)
        return 0;
    trImageWriter *writer = dynamic_cast<trImageWriter *>(node);
    if (!writer) {
        trError(trJoin(operation, ": The class ", className, " is not an image writer; unable to write ",
                                    name));
        trDestroyObject(node);
        return 0;
    }
    // The options go through as given, null included: the writer picks its defaults.
    long const result = writer->WriteImage(image, name, info);
    trDestroyObject(node);
    return result ? 1 : 0;
}

} // namespace

long trFImage::WriteEXR(trString const &name, trImageWriterFormatInfo *info)
{
    return WriteThroughPlugin("WriteEXR", "image_writer_exr", "EXR", this, name, info);
}

long trFImage::WriteTIFF(trString const &name, trImageWriterFormatInfo *info)
{
    return WriteThroughPlugin("WriteTIFF", "image_writer_tiff", "TIFF", this, name, info);
}

long trBImage::WriteTIFF(trString const &name, trImageWriterFormatInfo *info)
{
    return WriteThroughPlugin("WriteTIFF", "image_writer_tiff", "TIFF", this, name, info);
}

long trFloatMap::WriteEXR(trString const &name, trImageWriterFormatInfo *info)
{
    return WriteThroughPlugin("WriteEXR", "image_writer_exr", "EXR", this, name, info);
}
