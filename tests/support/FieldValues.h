// FieldValues.h - one typed read and one typed write for every kind of value the streams
// encode, shared by the stream tests, the fuzz driver and the stream benchmark.
#pragma once

#include "fileio/FileIO.h"

#include <cstdint>
#include <vector>

namespace fileio::test {

enum class ValueKind : unsigned char {
    Char,
    UnsignedChar,
    Short,
    Int,
    Long,
    UnsignedLong,
    LongLong,
    UnsignedLongLong,
    Float,
    Double,
    Bool,
    Text,
    Vector,
    Quaternion,
    Color,
    Matrix,
    Time,
    Range,
    Date,
    Seconds,
    ColorBytes,
    Patch,
    Bitmap,
    Icon,
    ClassIdentity,
    Token,
};

/// How many kinds there are.
inline constexpr unsigned kValueKindCount = static_cast<unsigned>(ValueKind::Token) + 1;

namespace detail {

template <class T> double ReadAs(VarnStream& stream) {
    T value{};
    stream >> value;
    return static_cast<double>(value);
}

/// The floats added in single precision in groups of four (a row), the groups in double.
inline double Sum(const float* values, int count) {
    constexpr int kGroup = 4;
    double sum = 0;
    for (int i = 0; i < count; i += kGroup) {
        float group = 0;
        for (int j = i; j < i + kGroup && j < count; ++j)
            group += values[j];
        sum += group;
    }
    return sum;
}

template <class T> double ReadFloats(VarnStream& stream) {
    T value{};
    stream >> value;
    return Sum(reinterpret_cast<const float*>(&value), sizeof value / sizeof(float));
}

double ReadOtherValue(VarnStream& stream, ValueKind kind);

} // namespace detail

/// Reads one value of `kind` and returns a number that sums it up (the value, a text's
/// length, the sum of a composite's components), so that readers can be compared. The kinds
/// a suite file's fields carry most are read here, small enough to be inlined into a
/// reading loop; the others by ReadOtherValue.
inline double ReadValue(VarnStream& stream, ValueKind kind) {
    using namespace detail;
    switch (kind) {
    case ValueKind::Char:
        return ReadAs<char>(stream);
    case ValueKind::UnsignedChar:
        return ReadAs<unsigned char>(stream);
    case ValueKind::Short:
        return ReadAs<short>(stream);
    case ValueKind::Int:
        return ReadAs<int>(stream);
    case ValueKind::Long:
        return ReadAs<long>(stream);
    case ValueKind::UnsignedLong:
        return ReadAs<unsigned long>(stream);
    case ValueKind::LongLong:
        return ReadAs<long long>(stream);
    case ValueKind::UnsignedLongLong:
        return ReadAs<unsigned long long>(stream);
    case ValueKind::Float:
        return ReadAs<float>(stream);
    case ValueKind::Double:
        return ReadAs<double>(stream);
    case ValueKind::Bool:
        return ReadAs<bool>(stream);
    case ValueKind::Text: {
        String value;
        stream >> value;
        return value.GetLength();
    }
    case ValueKind::Vector:
        return ReadFloats<::Vector>(stream);
    case ValueKind::Quaternion:
        return ReadFloats<::Quaternion>(stream);
    case ValueKind::Color:
        return ReadFloats<RGBFloat>(stream);
    case ValueKind::Matrix:
        return ReadFloats<Matrix44>(stream);
    case ValueKind::Time: {
        ::Time value;
        stream >> value;
        return static_cast<double>(value.GetTicks());
    }
    default:
        return detail::ReadOtherValue(stream, kind);
    }
}

namespace detail {

inline double ReadOtherValue(VarnStream& stream, ValueKind kind) {
    switch (kind) {
    case ValueKind::Range: {
        TimeRange value;
        stream >> value;
        return static_cast<double>(value.start.GetTicks()) +
               static_cast<double>(value.end.GetTicks());
    }
    case ValueKind::Date: {
        COleDateTime value;
        stream >> value;
        return value.m_dt + static_cast<int>(value.m_status);
    }
    case ValueKind::Seconds: {
        CTime value;
        stream >> value;
        return static_cast<double>(value.GetTime());
    }
    case ValueKind::ColorBytes: {
        ColorBuf value{};
        stream >> value;
        return value.red + value.green + value.blue + value.alpha;
    }
    case ValueKind::Patch: {
        PatchID value{};
        stream >> value;
        return static_cast<double>(value.word[0]) + value.word[1] + value.word[2] + value.word[3];
    }
    case ValueKind::Bitmap: {
        // A block with room for the largest colour table.
        std::vector<std::uint32_t> block((40 + 256 * 4) / 4, 0);
        stream >> *reinterpret_cast<tagBITMAPINFO*>(block.data());
        return block[1];
    }
    case ValueKind::Icon: {
        HICON value = nullptr;
        stream >> value;
        return value != nullptr ? 1 : 0;
    }
    case ValueKind::ClassIdentity: {
        unsigned int schema = 0;
        stream.LoadRuntimeClass(&schema);
        return schema;
    }
    case ValueKind::Token: {
        String value;
        stream.ParseString(value);
        return value.GetLength();
    }
    default:
        return 0;
    }
}

} // namespace detail

/// Writes a value of `kind` made from `seed` (the kinds a suite file's fields carry; the
/// others write nothing).
inline void WriteValue(VarnStream& stream, ValueKind kind, int seed) {
    switch (kind) {
    case ValueKind::Bool:
        stream << (seed % 2 == 0);
        break;
    case ValueKind::Int:
        stream << -seed * 1000;
        break;
    case ValueKind::Float:
        stream << seed * 0.1f;
        break;
    case ValueKind::Double:
        stream << seed / 3.0;
        break;
    case ValueKind::Text:
        stream << String(seed % 2 == 0 ? "robot&arm" : "x");
        break;
    case ValueKind::Vector:
        stream << ::Vector{1.5f, -2.0f, static_cast<float>(seed)};
        break;
    case ValueKind::Quaternion:
        stream << ::Quaternion{0, 0.707106769f, 0, static_cast<float>(seed)};
        break;
    case ValueKind::Matrix: {
        Matrix44 m{};
        m.row[0].x = m.row[1].y = m.row[2].z = m.row[3].w = -2.0f;
        m.row[3].x = static_cast<float>(seed);
        stream << m;
        break;
    }
    case ValueKind::Time:
        stream << ::Time(static_cast<long long>(seed) * 4501);
        break;
    case ValueKind::Range:
        stream << TimeRange{::Time(4500LL), ::Time(8104500LL + seed)};
        break;
    case ValueKind::ColorBytes:
        stream << ColorBuf{10, 20, 30, static_cast<unsigned char>(seed)};
        break;
    case ValueKind::Date:
        stream << COleDateTime{45000.25 + seed, COleDateTime::valid};
        break;
    default:
        break;
    }
}

} // namespace fileio::test
