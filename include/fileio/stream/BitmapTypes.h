// BitmapTypes.h - the bitmap structures and the icon handle that the streams encode.
//
// On Windows these are the system's own types: the structures are only declared here, and a
// host that includes <windows.h> (before or after this header) gets the system's definitions
// with nothing to clash. Elsewhere this header defines them, with the published names, field
// names, widths and order, so the same host code compiles and the same bytes are written.
//
// Stream forms (see VarnStream), field by field, little-endian:
//   tagBITMAPFILEHEADER  14 bytes: bfType (16), bfSize (32), bfReserved1 (16), bfReserved2 (16),
//                        bfOffBits (32); text: the five numbers
//   tagBITMAPINFOHEADER  40 bytes: the eleven fields in order; text: the eleven numbers
//   tagBITMAPINFO        the info header, then its colour table (BitmapColorCount entries of 4
//                        bytes: blue, green, red, reserved)
//   HICON                the icon's colour image and mask, each as an info header followed by
//                        its pixel rows (see VarnStream). Icons exist only on Windows: elsewhere
//                        the icon operators write and create nothing and set the failed bit.
#pragma once

#include <cstdint>

#if defined(_WIN32)

struct tagBITMAPFILEHEADER;
struct tagBITMAPINFOHEADER;
struct tagRGBQUAD;
struct tagBITMAPINFO;

#else

#pragma pack(push, 2)
struct tagBITMAPFILEHEADER {
    std::uint16_t bfType;
    std::uint32_t bfSize;
    std::uint16_t bfReserved1;
    std::uint16_t bfReserved2;
    std::uint32_t bfOffBits;
};
#pragma pack(pop)

struct tagBITMAPINFOHEADER {
    std::uint32_t biSize;
    std::int32_t biWidth;
    std::int32_t biHeight;
    std::uint16_t biPlanes;
    std::uint16_t biBitCount;
    std::uint32_t biCompression;
    std::uint32_t biSizeImage;
    std::int32_t biXPelsPerMeter;
    std::int32_t biYPelsPerMeter;
    std::uint32_t biClrUsed;
    std::uint32_t biClrImportant;
};

struct tagRGBQUAD {
    std::uint8_t rgbBlue;
    std::uint8_t rgbGreen;
    std::uint8_t rgbRed;
    std::uint8_t rgbReserved;
};

/// The header followed by its colour table. Like the system's structure it declares one
/// colour; a bitmap with a longer table lives in a block allocated for all of it.
struct tagBITMAPINFO {
    tagBITMAPINFOHEADER bmiHeader;
    tagRGBQUAD bmiColors[1];
};

typedef tagBITMAPFILEHEADER BITMAPFILEHEADER;
typedef tagBITMAPINFOHEADER BITMAPINFOHEADER;
typedef tagRGBQUAD RGBQUAD;
typedef tagBITMAPINFO BITMAPINFO;

static_assert(sizeof(tagBITMAPFILEHEADER) == 14 && sizeof(tagBITMAPINFOHEADER) == 40);

#endif

/// The icon handle, declared as the system declares it.
struct HICON__;
typedef HICON__* HICON;
