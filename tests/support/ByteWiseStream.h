// ByteWiseStream.h - a stream over bytes in memory that has no block of its own, so that
// every token reader, peek and scan runs the base class's byte-by-byte definitions through
// the virtual transport, as a file or socket transport would. Used by the stream tests and
// the fuzz targets to check the base algorithms against the memory stream's own.
//
// Like a file, a Read that cannot deliver all its bytes sets the failed bit.
#pragma once

#include "fileio/stream/MemoryStream.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

class ByteWiseStream : public VarnStream {
public:
    /// Replaces the data, with the position at 0 and the mode given. Loading a suite file
    /// (the Varn bit) reads its marker as a file's opener does: "B" is read past.
    void OpenOn(std::string_view bytes, FileMode mode) {
        m_data.assign(bytes.data(), bytes.size());
        m_position = 0;
        SetMode(mode);
        if ((mode & FM_VARN) != 0 && (mode & FM_LOADING) != 0)
            HandleVarnMarker(false);
    }
    [[nodiscard]] const std::string& Data() const { return m_data; }

    unsigned long long ReadC(void* buffer, unsigned long long count) override {
        const unsigned long long available =
            m_position < m_data.size() ? m_data.size() - m_position : 0;
        const unsigned long long n = std::min(count, available);
        if (n != 0)
            std::memcpy(buffer, m_data.data() + m_position, static_cast<std::size_t>(n));
        m_position += n;
        return n;
    }
    void Read(void* buffer, long count) override {
        if (count > 0 && ReadC(buffer, static_cast<unsigned long long>(count)) !=
                             static_cast<unsigned long long>(count))
            OnFailed();
    }
    void Write(const void* data, unsigned long long count) override {
        if (m_position > m_data.size())
            m_data.resize(static_cast<std::size_t>(m_position));
        m_data.replace(static_cast<std::size_t>(m_position),
                       std::min<std::size_t>(static_cast<std::size_t>(count),
                                             m_data.size() - static_cast<std::size_t>(m_position)),
                       static_cast<const char*>(data), static_cast<std::size_t>(count));
        m_position += count;
    }
    void Flush() override {}
    void Close() override {}
    bool ReadLine(MemoryStream& line) override { return VarnStream::ReadLine(line); }
    bool ReadLine(String& line) override { return VarnStream::ReadLine(line); }
    void ParseString(String& out) override { VarnStream::ParseString(out); }
    void ParseToken(char* out, char delimiter) override { VarnStream::ParseToken(out, delimiter); }
    void ParseToken(String& out) override { VarnStream::ParseToken(out); }
    using VarnStream::ParseToken;
    void Seek(long long offset, SeekMode mode) override {
        const auto step = static_cast<unsigned long long>(offset);
        if (mode == SM_BEGIN)
            m_position = step;
        else if (mode == SM_END)
            m_position = m_data.size() - step;
        else
            m_position += step;
    }
    unsigned long long GetPos() override { return m_position; }
    bool VirtualEof() override { return m_position >= m_data.size(); }

private:
    std::string m_data;
    unsigned long long m_position = 0;
};
