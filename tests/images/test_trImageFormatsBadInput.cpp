// Bad files for every reader of this library's own: missing, empty, truncated, corrupt,
// with dimensions far beyond what the file holds, and under the wrong extension. Each
// must end in 0 and one clear message naming the reader, leave the image empty, and
// allocate nothing out of proportion to the file.

#include "test_trImageFormatsSupport.h"

#include <functional>
#include <sys/resource.h>

namespace {

enum Reader { Sgi, Tga, Mola, ByName };

long Read(Reader reader, trImage &image, std::string const &path)
{
    switch (reader) {
    case Sgi: return image.ReadSGI(path.c_str());
    case Tga: return image.ReadTGA(path.c_str());
    case Mola: return image.ReadMOLA(path.c_str());
    default: return image.ReadFile(path.c_str());
    }
}

Planes SmallPlanes(int z, int h, int w)
{
    Planes s(z, std::vector<std::vector<unsigned>>(h, std::vector<unsigned>(w)));
    for (int c = 0; c < z; ++c)
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                s[c][y][x] = unsigned((x * 31 + y * 17 + c * 5) % 251);
    return s;
}

// A copy cut or zero-padded to `size` bytes, then changed by `edit`.
Bytes Sized(Bytes b, std::size_t size, std::function<void(Bytes &)> const &edit = {})
{
    b.resize(size, 0);
    if (edit)
        edit(b);
    return b;
}

// A Targa header: type, bits per pixel, size, identification length, colour map length.
Bytes TgaHeader(int type, int bits, int w, int h, int idLength = 0, int mapLength = 0)
{
    auto b = [](int v) { return static_cast<unsigned char>(v); };
    return {b(idLength), b(mapLength ? 1 : 0), b(type), 0, 0, b(mapLength), b(mapLength >> 8), b(mapLength ? 24 : 0), 0,
            0, 0, 0, b(w), b(w >> 8), b(h), b(h >> 8), b(bits), 0};
}

// Holds the address space to 8 GiB while alive, so that a forged size that tried to
// allocate gigabytes would fail the test rather than pass by luck. Sanitizer builds
// reserve huge shadow regions: the limit is left alone there.
struct AddressSpaceLimit {
    rlimit old{};
    bool active = false;
    AddressSpaceLimit()
    {
#if !defined(__SANITIZE_ADDRESS__)
        getrlimit(RLIMIT_AS, &old);
        rlimit limit = old;
        limit.rlim_cur = std::min<rlim_t>(old.rlim_max, rlim_t(8) << 30);
        active = setrlimit(RLIMIT_AS, &limit) == 0;
#endif
    }
    ~AddressSpaceLimit()
    {
        if (active)
            setrlimit(RLIMIT_AS, &old);
    }
};

} // namespace

// Each row: a file (a name starting with '/' is never written), the reader, and the start
// of its one message; with a tail, the whole message is prefix + path + tail.
TEST(trImageFormatsBadInput, RefusedFilesTable)
{
    struct Row {
        std::string name;
        Bytes bytes;
        Reader reader;
        std::string prefix;
        char const *tail = nullptr;
    };
    std::string const notSgi = "ReadSGI: File is not an SGI image (not found magic 474): \n\n";
    std::string const sgiShort = "ReadSGI: File is truncated", tgaHeader = "Error reading TGA header in file ";
    std::string const tgaUnable = "Unable to read TGA file ", scanline = "Error reading scanline from TGA file ";
    std::string const mola = "Unable to read MOLA file ";
    char const *molaSize = "\nUnknown file size from which to determine dimensions";
    Bytes const verbatim = SgiFile(1, SmallPlanes(3, 2, 4));
    Bytes const big = SgiFile(1, SmallPlanes(3, 6, 10));
    // A repeat that runs past the row's end; a literal wanting more than the row holds; a
    // row table entry pointing into the header.
    Bytes const rle = Sized(SgiHeader(1, 1, 4, 1, 1), 520, [](Bytes &b) {
        b.insert(b.end(), {0x05, 7, 0x00});
        Put32(b, 512, 520);
        Put32(b, 516, 3);
    });
    std::vector<Row> rows = {
        {"/no/such/folder/x.sgi", {}, Sgi, "ReadSGI: Unable to open image file", ""},
        {"/no/such/folder/x.tga", {}, Tga, "ReadTGA: Unable to open image file", ""},
        {"/no/such/folder/x.img", {}, Mola, "ReadMOLA: Unable to open image file", ""},
        {"empty.sgi", {}, Sgi, notSgi}, {"one.sgi", {0x01}, Sgi, notSgi},
        {"header.sgi", Sized(SgiHeader(0, 1, 4, 4, 3), 100), Sgi, sgiShort}, // short of 512 bytes
        {"head.sgi", Sized(big, 300), Sgi, sgiShort},
        {"tables.sgi", Sized(SgiFile(1, SmallPlanes(3, 6, 10), true), 512 + 50), Sgi, sgiShort},
        {"c.sgi", Sized(verbatim, verbatim.size(), [](Bytes &b) { b[2] = 2; }), Sgi, "ReadSGI: Unknown storage 2"},
        {"c.sgi", Sized(verbatim, verbatim.size(), [](Bytes &b) { b[3] = 4; }), Sgi,
         "ReadSGI: Unsupported bytes per channel 4"},
        {"c.sgi", Sized(verbatim, verbatim.size(), [](Bytes &b) { Put16(b, 6, 0); }), Sgi,
         "ReadSGI: Image has no pixels"},
        {"c.sgi", Sized(verbatim, verbatim.size(), [](Bytes &b) { Put16(b, 10, 0); }), Sgi,
         "ReadSGI: Image has no pixels"},
        {"c.sgi", rle, Sgi, "ReadSGI: Corrupt run-length data"},
        {"c.sgi", Sized(rle, rle.size(), [](Bytes &b) { b[520] = 0x84; }), Sgi, "ReadSGI: Corrupt run-length data"},
        {"c.sgi", Sized(rle, rle.size(), [](Bytes &b) { b[520] = 0x02, Put32(b, 512, 10); }), Sgi,
         "ReadSGI: A run-length row lies outside the file"},
        // The largest sizes the header can state, in files of a few hundred bytes: refused
        // before any allocation (see the address space limit below).
        {"huge.sgi", Sized(SgiHeader(0, 2, 65535, 65535, 4), 700), Sgi,
         "ReadSGI: Image size 65535 x 65535 x 4 is implausible"},
        {"huge_rle.sgi", Sized(SgiHeader(1, 2, 65535, 65535, 3), 4000), Sgi, sgiShort},
        // Tables that fit the file, but a size out of all proportion to it.
        {"wide.sgi", Sized(SgiHeader(1, 2, 65535, 20, 3), 512 + 8 * 60 + 4,
                           [](Bytes &b) {
                               for (std::size_t i = 0; i < 60; ++i)
                                   Put32(b, 512 + 4 * i, 512 + 8 * 60), Put32(b, 512 + 240 + 4 * i, 4);
                           }),
         Sgi, "ReadSGI: Image size 65535 x 20 x 3 is implausible"},
        {"huge.tga", Sized(TgaHeader(2, 24, 65535, 65535), 600), Tga, scanline},
        {"t.tga", {}, Tga, tgaHeader}, {"t.tga", Bytes(17, 0), Tga, tgaHeader},
        {"t.tga", Sized(TgaHeader(1, 8, 4, 4), 100), Tga, tgaUnable}, // paletted
        {"t.tga", Sized(TgaHeader(2, 32, 4, 4), 100), Tga, tgaUnable},
        {"t.tga", Sized(TgaHeader(2, 24, 2, 2, 200), 50), Tga,
         "Error while attempting to skip TGA Image Identification Field.\nTGA file may be invalid.\n"},
        {"t.tga", Sized(TgaHeader(2, 24, 2, 2, 0, 100), 50), Tga,
         "Error while attempting to skip TGA Color Map in file "},
        {"t.tga", Sized(TgaHeader(2, 24, 4, 4), 18 + 4 * 4 * 3 - 1), Tga, scanline},
        {"t.tga", Sized(TgaHeader(2, 24, 0, 4), 30), Tga, "ReadTGA: Image has no pixels"},
        // MOLA grids are told by their length alone.
        {"m.img", {}, ByName, mola, molaSize}, {"m.img", Bytes(1, 0), ByName, mola, molaSize},
        {"m.img", Bytes(2073599, 0), ByName, mola, molaSize}, {"m.img", Bytes(2073601, 0), ByName, mola, molaSize},
        {"sgi.img", SgiFile(1, SmallPlanes(3, 2, 2)), Mola, mola},
    };
    if (HaveDataFile("rgb8.png")) { // a PNG under an SGI name
        rows.push_back({"png.rgb", ReadBytes(DataPath("rgb8.png")), Sgi, notSgi});
        rows.push_back({"png.rgb", ReadBytes(DataPath("rgb8.png")), ByName, notSgi, ""});
    }
    ScratchDir dir;
    AddressSpaceLimit limit;
    for (Row const &row : rows) {
        std::string const path = row.name[0] == '/' ? row.name : dir.File(row.name.c_str());
        SCOPED_TRACE(path + " expecting " + row.prefix);
        if (row.name[0] != '/')
            WriteBytes(path, row.bytes);
        trImage image;
        // Something to lose: a failed read must leave the image empty.
        ASSERT_EQ(image.Init(0, 0, 3, 3, 3, 1), 1);
        MessageCapture capture;
        EXPECT_EQ(Read(row.reader, image, path), 0);
        ASSERT_EQ(capture.errors.size(), 1u) << capture.AllErrors();
        std::string const &message = capture.errors[0];
        EXPECT_TRUE(!row.tail || message == row.prefix + path + row.tail) << message;
        EXPECT_EQ(message.rfind(row.prefix, 0), 0u) << message;
        EXPECT_NE(message.find(path), std::string::npos) << message;
        EXPECT_TRUE(image.Pixels() == nullptr && image.Width() == 0);
    }
}

// A file cut short in its image data keeps the rows it has, leaves the rest black and
// still reads, with a warning naming the file.
TEST(trImageFormatsBadInput, SgiTruncatedDataStillReads)
{
    Planes const planes = SmallPlanes(3, 6, 10);
    Bytes const verbatim = SgiFile(1, planes), rle = SgiFile(1, planes, true);
    std::vector<Bytes> files = {Sized(verbatim, 513), Sized(verbatim, 512 + 90), Sized(verbatim, verbatim.size() - 1),
                                Sized(rle, rle.size() - 3)}; // the last cut inside the rows the tables point to
    if (HaveDataFile("rgb8_rle.sgi")) {
        Bytes const real = ReadBytes(DataPath("rgb8_rle.sgi"));
        files.push_back(Sized(real, real.size() * 3 / 4));
    }
    ScratchDir dir;
    std::string const path = dir.File("v.sgi");
    for (std::size_t i = 0; i < files.size(); ++i) {
        SCOPED_TRACE(i);
        WriteBytes(path, files[i]);
        trImage image;
        MessageCapture capture;
        EXPECT_EQ(image.ReadSGI(path.c_str()), 1);
        EXPECT_TRUE(capture.errors.empty()) << capture.AllErrors();
        ASSERT_EQ(capture.warnings.size(), 1u);
        EXPECT_EQ(capture.warnings[0].rfind("ReadSGI: File is truncated", 0), 0u) << capture.warnings[0];
        EXPECT_NE(capture.warnings[0].find(path), std::string::npos);
        EXPECT_NE(image.Pixels(), nullptr);
    }
    // Half the file: the red plane (first in the file) is whole, the blue one is black.
    WriteBytes(path, Sized(verbatim, 512 + 6 * 10 + 5));
    trImage image;
    MessageCapture capture;
    ASSERT_EQ(image.ReadSGI(path.c_str()), 1);
    EXPECT_EQ(image.PixelRaw(0, 5)[0], planes[0][5][0]);
    EXPECT_EQ(image.PixelRaw(0, 5)[2], 0) << "unread samples stay black";
}

TEST(trImageFormatsBadInput, TargaSkipsIdentificationAndColourMap)
{
    // Two pixels after a 3-byte identification field and a 2-entry 24-bit colour map.
    Bytes file = TgaHeader(2, 24, 2, 1, 3, 2);
    file.insert(file.end(), {97, 98, 99, 1, 2, 3, 4, 5, 6, 10, 20, 30, 40, 50, 60});
    ScratchDir dir;
    WriteBytes(dir.File("ok.tga"), file);
    trImage image;
    ASSERT_EQ(image.ReadTGA(dir.File("ok.tga").c_str()), 1);
    EXPECT_EQ(Bytes(image.Pixels(), image.Pixels() + 6), (Bytes{30, 20, 10, 60, 50, 40}));
}
