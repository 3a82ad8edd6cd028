// SpanStream.cpp - the loading stream over the caller's bytes.

#include "stream/SpanStream.h"

namespace fileio::detail {

SpanStream::SpanStream(std::string_view bytes, float version, FileMode mode) {
    SetMode(mode | FM_LOADING);
    SetVersion(version);
    Window& window = TransportWindow();
    // Never written through: MakeRoom gives no room.
    window.data = reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.data()));
    window.length = bytes.size();
}

bool SpanStream::Refill(Window&) {
    return false;
}

unsigned long long SpanStream::MakeRoom(Window&, unsigned long long) {
    return 0;
}

void SpanStream::Reposition(Window& window, unsigned long long offset) {
    window.position = offset;
}

unsigned long long SpanStream::DataLength(const Window& window) {
    return window.length;
}

void SpanStream::Commit(Window&) {}

} // namespace fileio::detail
