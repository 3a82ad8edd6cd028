// SpanStream.h - a loading stream over bytes the caller holds (internal).
//
// The scanner reads a token from a line it has taken (a header that opens a line, while it
// skips a section) with the same readers as any stream, through this transport: its window
// is the caller's bytes, which must outlive it. It cannot be written to.
#pragma once

#include "fileio/stream/VarnStream.h"

#include <string_view>

namespace fileio::detail {

class SpanStream final : public VarnStream {
public:
    /// Loads `bytes` with `mode` (loading is added) and the version given.
    SpanStream(std::string_view bytes, float version, FileMode mode = FM_LOADING);
    void Close() override {}

protected:
    bool Refill(Window& window) override;
    unsigned long long MakeRoom(Window& window, unsigned long long count) override;
    void Reposition(Window& window, unsigned long long offset) override;
    unsigned long long DataLength(const Window& window) override;
    void Commit(Window& window) override;
};

} // namespace fileio::detail
