// StreamTestSupport.h - helpers for the stream tests: streams over literal bytes and the
// bytes a stream holds, on the memory stream or on the byte-wise transport.
#pragma once

#include "fileio/stream/FileStream.h"
#include "fileio/stream/MemoryStream.h"
#include "support/ByteWiseStream.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

namespace streamtest {

inline std::string Bytes(const MemoryStream& stream) {
    return std::string(reinterpret_cast<const char*>(stream.GetData()),
                       static_cast<std::size_t>(stream.GetLength()));
}

inline std::string Raw(std::initializer_list<int> bytes) {
    std::string out;
    for (int b : bytes)
        out += static_cast<char>(b);
    return out;
}

/// The bytes as hex pairs, for messages: "50 01 00 80".
inline std::string Hex(std::string_view bytes) {
    std::string out;
    char pair[4];
    for (unsigned char b : bytes) {
        std::snprintf(pair, sizeof pair, out.empty() ? "%02X" : " %02X", b);
        out += pair;
    }
    return out;
}

/// Opens `stream` for loading on a copy of `bytes`, with the version given (a suite file's
/// marker, with FM_VARN, decides the version and form instead).
inline void Load(VarnStream& stream, std::string_view bytes, FileMode mode = FM_LOADING,
                 float version = 13.0f) {
    if (auto* memory = dynamic_cast<MemoryStream*>(&stream))
        memory->Open(bytes.data(), bytes.size(), mode | FM_LOADING);
    else
        static_cast<ByteWiseStream&>(stream).OpenOn(bytes, mode | FM_LOADING);
    if ((mode & FM_VARN) == 0)
        stream.SetVersion(version);
}

inline void Store(MemoryStream& stream, bool binary) {
    stream.Open(binary ? FM_BINARY : FM_STORING);
    stream.SetVersion(13.0f);
}

inline void LoadBack(MemoryStream& reader, const MemoryStream& written) {
    Load(reader, Bytes(written), written.IsBinary() ? FM_BINARY : FM_LOADING);
}

struct BothForms {
    BothForms() {
        Store(text, false);
        Store(binary, true);
    }
    template <class T> BothForms& operator<<(const T& value) {
        text << value;
        binary << value;
        return *this;
    }
    MemoryStream text, binary;
};

/// A memory stream, or a byte-wise stream that runs the base class's readers.
inline std::unique_ptr<VarnStream> Transport(bool byteWise) {
    if (byteWise)
        return std::make_unique<ByteWiseStream>();
    return std::make_unique<MemoryStream>();
}

/// Runs `check` on a memory stream and on a byte-wise stream, each loaded with `bytes`.
template <class Check>
void OnBothTransports(std::string_view bytes, FileMode mode, float version, Check check) {
    for (bool byteWise : {false, true}) {
        SCOPED_TRACE(byteWise ? "byte-wise" : "memory");
        auto stream = Transport(byteWise);
        Load(*stream, bytes, mode, version);
        check(*stream);
    }
}
template <class Check> void OnBothTransports(std::string_view bytes, Check check) {
    OnBothTransports(bytes, FM_LOADING, 13.0f, check);
}

/// The search for missing files starts and ends with no aliases, an empty failed list and
/// "cancel all" reset.
class MissingFileSearch : public ::testing::Test {
protected:
    MissingFileSearch() { Forget(); }
    ~MissingFileSearch() override { Forget(); }
    static void Forget() {
        FileStream::FreeFileAliases();
        FileStream::FreePathAliases();
        FileStream::ClearFailedList();
        FileStream::ResetCancelAll();
    }
};

} // namespace streamtest
