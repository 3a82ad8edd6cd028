// BitmapEncoding.cpp - the bitmap structures and icons in both forms.
//
// The structures are handled through their bytes and a table of their fields (width and
// signedness), so the same code serves the system's definitions on Windows, which are not
// visible here, and the library's own elsewhere. Each field goes through the scalar
// operator of its Windows type: WORD as unsigned short, LONG as int, DWORD as unsigned long
// (a 32-bit strtoul in text), BYTE as unsigned char.

#include "fileio/stream/VarnStream.h"

#include "platform/Platform.h"

#include <cstdint>
#include <cstring>
#include <span>

namespace {

struct Field {
    unsigned char width; // bytes: 1, 2 or 4
    bool isSigned;
};

constexpr Field kFileHeaderFields[] = {{2, false}, {4, false}, {2, false}, {2, false}, {4, false}};
constexpr Field kInfoHeaderFields[] = {{4, false}, {4, true},  {4, true},  {2, false},
                                       {2, false}, {4, false}, {4, false}, {4, true},
                                       {4, true},  {4, false}, {4, false}};
constexpr Field kColorFields[] = {{1, false}, {1, false}, {1, false}, {1, false}};

constexpr std::size_t kInfoHeaderSize = 40;
constexpr std::size_t kInfoHeaderFieldCount = std::size(kInfoHeaderFields);
constexpr std::size_t kBitCountOffset = 14;
constexpr std::size_t kColorsUsedOffset = 32;
/// The most colours a table may hold (8 bits per pixel).
constexpr unsigned int kMaxColors = 256;
/// The largest icon side the reader accepts.
constexpr std::int32_t kMaxIconSide = 256;

/// Writes the fields stored at `bytes`, one " " between them in text.
void WriteFields(VarnStream& stream, const unsigned char* bytes, std::span<const Field> fields) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i != 0 && stream.IsAscii())
            stream << ' ';
        const Field field = fields[i];
        if (field.width == 1) {
            stream << bytes[0];
        } else if (field.width == 2) {
            std::uint16_t value;
            std::memcpy(&value, bytes, 2);
            stream << static_cast<unsigned short>(value);
        } else if (field.isSigned) {
            std::int32_t value;
            std::memcpy(&value, bytes, 4);
            stream << static_cast<int>(value);
        } else {
            std::uint32_t value;
            std::memcpy(&value, bytes, 4);
            stream << static_cast<unsigned long>(value);
        }
        bytes += field.width;
    }
}

/// Reads the fields into the bytes at `bytes`.
void ReadFields(VarnStream& stream, unsigned char* bytes, std::span<const Field> fields) {
    for (const Field field : fields) {
        if (field.width == 1) {
            stream >> bytes[0];
        } else if (field.width == 2) {
            unsigned short value = 0;
            stream >> value;
            const auto stored = static_cast<std::uint16_t>(value);
            std::memcpy(bytes, &stored, 2);
        } else if (field.isSigned) {
            int value = 0;
            stream >> value;
            const auto stored = static_cast<std::int32_t>(value);
            std::memcpy(bytes, &stored, 4);
        } else {
            unsigned long value = 0;
            stream >> value;
            const auto stored = static_cast<std::uint32_t>(value);
            std::memcpy(bytes, &stored, 4);
        }
        bytes += field.width;
    }
}

void WriteSeparator(VarnStream& stream) {
    if (stream.IsAscii())
        stream << ' ';
}

/// The fields of an info header as numbers, and back.
using InfoHeaderValues = std::uint32_t[kInfoHeaderFieldCount];

void EncodeInfoHeader(const InfoHeaderValues& values, unsigned char* bytes) {
    for (std::size_t i = 0; i < kInfoHeaderFieldCount; ++i) {
        std::memcpy(bytes, &values[i], kInfoHeaderFields[i].width);
        bytes += kInfoHeaderFields[i].width;
    }
}

void DecodeInfoHeader(const unsigned char* bytes, InfoHeaderValues& values) {
    for (std::size_t i = 0; i < kInfoHeaderFieldCount; ++i) {
        values[i] = 0;
        std::memcpy(&values[i], bytes, kInfoHeaderFields[i].width);
        bytes += kInfoHeaderFields[i].width;
    }
}

enum InfoField { kSize, kWidth, kHeight, kPlanes, kBitCount, kCompression, kSizeImage };

/// Bytes per row of a 1-bit mask: rows are padded to 32 bits.
std::size_t MaskStride(int width) {
    return ((static_cast<std::size_t>(width) + 31) / 32) * 4;
}

/// Writes raw bytes: in text as decimal numbers with one " " between them.
void WriteByteRun(VarnStream& stream, const unsigned char* bytes, std::size_t count) {
    if (stream.IsBinary()) {
        stream.Write(bytes, count);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (i != 0)
            stream << ' ';
        stream << bytes[i];
    }
}

bool ReadByteRun(VarnStream& stream, unsigned char* bytes, std::size_t count) {
    if (stream.IsBinary())
        return stream.ReadC(bytes, count) == count;
    for (std::size_t i = 0; i < count; ++i)
        stream >> bytes[i];
    return true;
}

/// One part of an icon: an info header for width x height at bitCount bits per pixel,
/// followed by its pixel rows.
void WriteIconPart(VarnStream& stream, int width, int height, int bitCount,
                   const std::vector<unsigned char>& pixels) {
    const InfoHeaderValues values = {kInfoHeaderSize,
                                     static_cast<std::uint32_t>(width),
                                     static_cast<std::uint32_t>(height),
                                     1,
                                     static_cast<std::uint32_t>(bitCount),
                                     0,
                                     static_cast<std::uint32_t>(pixels.size()),
                                     0,
                                     0,
                                     0,
                                     0};
    unsigned char header[kInfoHeaderSize];
    EncodeInfoHeader(values, header);
    WriteFields(stream, header, kInfoHeaderFields);
    WriteSeparator(stream);
    WriteByteRun(stream, pixels.data(), pixels.size());
}

/// Reads one part written by WriteIconPart; false when its header is not one of an icon
/// part of that kind (a size outside 1..256, another bit count, a wrong image size) or its
/// pixels are cut short.
bool ReadIconPart(VarnStream& stream, int bitCount, int& width, int& height,
                  std::vector<unsigned char>& pixels) {
    unsigned char header[kInfoHeaderSize];
    ReadFields(stream, header, kInfoHeaderFields);
    InfoHeaderValues values;
    DecodeInfoHeader(header, values);
    const auto partWidth = static_cast<std::int32_t>(values[kWidth]);
    const auto partHeight = static_cast<std::int32_t>(values[kHeight]);
    if (partWidth < 1 || partWidth > kMaxIconSide || partHeight < 1 || partHeight > kMaxIconSide ||
        values[kBitCount] != static_cast<std::uint32_t>(bitCount))
        return false;
    const std::size_t stride =
        bitCount == 1 ? MaskStride(partWidth) : static_cast<std::size_t>(partWidth) * 4;
    const std::size_t size = stride * static_cast<std::size_t>(partHeight);
    if (values[kSizeImage] != size)
        return false;
    width = partWidth;
    height = partHeight;
    pixels.assign(size, 0);
    return ReadByteRun(stream, pixels.data(), size);
}

} // namespace

unsigned int BitmapColorCount(const tagBITMAPINFOHEADER& header) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(&header);
    std::uint32_t used;
    std::uint16_t bitCount;
    std::memcpy(&used, bytes + kColorsUsedOffset, 4);
    std::memcpy(&bitCount, bytes + kBitCountOffset, 2);
    if (used != 0)
        return used;
    return bitCount >= 1 && bitCount <= 8 ? 1u << bitCount : 0;
}

VarnStream& VarnStream::operator<<(const tagBITMAPFILEHEADER& value) {
    WriteFields(*this, reinterpret_cast<const unsigned char*>(&value), kFileHeaderFields);
    return *this;
}

VarnStream& VarnStream::operator>>(tagBITMAPFILEHEADER& value) {
    ReadFields(*this, reinterpret_cast<unsigned char*>(&value), kFileHeaderFields);
    return *this;
}

VarnStream& VarnStream::operator<<(const tagBITMAPINFOHEADER& value) {
    WriteFields(*this, reinterpret_cast<const unsigned char*>(&value), kInfoHeaderFields);
    return *this;
}

VarnStream& VarnStream::operator>>(tagBITMAPINFOHEADER& value) {
    ReadFields(*this, reinterpret_cast<unsigned char*>(&value), kInfoHeaderFields);
    return *this;
}

// The colour table follows the header in the caller's block (the structure declares one
// colour, the block holds them all).
VarnStream& VarnStream::operator<<(const tagBITMAPINFO& value) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(&value);
    const auto& header = reinterpret_cast<const tagBITMAPINFOHEADER&>(value);
    WriteFields(*this, bytes, kInfoHeaderFields);
    const unsigned int colors = BitmapColorCount(header);
    if (colors > kMaxColors) {
        OnFailed();
        return *this;
    }
    for (unsigned int i = 0; i < colors; ++i) {
        WriteSeparator(*this);
        WriteFields(*this, bytes + kInfoHeaderSize + 4 * i, kColorFields);
    }
    return *this;
}

VarnStream& VarnStream::operator>>(tagBITMAPINFO& value) {
    auto* bytes = reinterpret_cast<unsigned char*>(&value);
    const auto& header = reinterpret_cast<const tagBITMAPINFOHEADER&>(value);
    ReadFields(*this, bytes, kInfoHeaderFields);
    const unsigned int colors = BitmapColorCount(header);
    if (colors > kMaxColors) {
        OnFailed();
        return *this;
    }
    for (unsigned int i = 0; i < colors; ++i)
        ReadFields(*this, bytes + kInfoHeaderSize + 4 * i, kColorFields);
    return *this;
}

// An icon is its colour image (32 bits per pixel, blue green red alpha, bottom row first)
// followed by its mask (1 bit per pixel, rows padded to 32 bits, bottom row first), each as
// an info header and its pixel rows.
VarnStream& VarnStream::operator<<(HICON icon) {
    fileio::platform::IconImage image;
    if (!fileio::platform::Icons().iconToImage(icon, image)) {
        OnFailed();
        return *this;
    }
    WriteIconPart(*this, image.width, image.height, 32, image.color);
    WriteSeparator(*this);
    WriteIconPart(*this, image.width, image.height, 1, image.mask);
    return *this;
}

VarnStream& VarnStream::operator>>(HICON& icon) {
    icon = nullptr;
    fileio::platform::IconImage image;
    int maskWidth = 0;
    int maskHeight = 0;
    if (!ReadIconPart(*this, 32, image.width, image.height, image.color) ||
        !ReadIconPart(*this, 1, maskWidth, maskHeight, image.mask) || maskWidth != image.width ||
        maskHeight != image.height) {
        OnFailed();
        return *this;
    }
    icon = static_cast<HICON>(fileio::platform::Icons().imageToIcon(image));
    if (icon == nullptr)
        OnFailed();
    return *this;
}
