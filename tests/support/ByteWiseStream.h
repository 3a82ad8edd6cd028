// ByteWiseStream.h - a read-only transport whose window holds one byte: every scan, peek
// and value read meets the window's edge at every byte, as a file's reads meet their
// buffer's edge now and then. The stream tests and the fuzz targets run it beside the
// memory stream, and the two must read the same bytes the same way.
#pragma once

#include "fileio/stream/VarnStream.h"

#include <string>
#include <string_view>

class ByteWiseStream : public VarnStream {
public:
    /// Replaces the data, with the position at 0 and the mode given. A suite file (the Varn
    /// bit) has its marker read, as every opener does.
    void OpenOn(std::string_view bytes, FileMode mode) {
        m_data.assign(bytes.data(), bytes.size());
        TransportWindow() = Window{};
        SetMode(mode);
        if ((mode & FM_VARN) != 0 && (mode & FM_LOADING) != 0)
            ApplySuiteFileMarker();
    }
    void Close() override {}

protected:
    bool Refill(Window& window) override {
        return Load(window, window.origin + window.position) != 0;
    }
    /// Only read: a write finds no room and fails.
    unsigned long long MakeRoom(Window&, unsigned long long) override { return 0; }
    void Reposition(Window& window, unsigned long long offset) override { Load(window, offset); }
    unsigned long long DataLength(const Window&) override { return m_data.size(); }
    void Commit(Window&) override {}

private:
    /// Shows the byte at `offset` (none past the end); returns how many bytes the window
    /// holds.
    unsigned long long Load(Window& window, unsigned long long offset) {
        window.origin = offset;
        window.position = 0;
        window.data = &m_byte;
        window.capacity = 0;
        window.length = offset < m_data.size() ? 1 : 0;
        if (window.length != 0)
            m_byte = static_cast<unsigned char>(m_data[static_cast<std::size_t>(offset)]);
        return window.length;
    }

    std::string m_data;
    unsigned char m_byte = 0;
};
