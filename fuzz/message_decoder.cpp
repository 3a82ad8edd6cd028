// message_decoder.cpp - the message socket's frame decoder over arbitrary bytes.
//
// The first byte picks the limit (from a few bytes to 4 GiB) and the size of the pieces the
// rest is fed in (1 to 31 bytes, or all at once), so that every split of a header or a
// payload is tried. Whole messages are checked and dropped, and decoding goes on after each
// one. No input may crash, leak, read outside its bytes, take payload memory beyond what
// has arrived (doubling from 64 KiB) or pass a message above the limit.
#include "FuzzSupport.h"
#include "net/MessageFrame.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    static const std::uint64_t limits[] = {0, 1, 8, 100, 4096, 1 << 20, 1ULL << 32};
    const std::uint8_t selector = data[0];
    const std::uint64_t limit = limits[selector % (sizeof limits / sizeof limits[0])];
    const std::size_t piece = (selector >> 3) == 0 ? size : (selector >> 3);
    fileio::net::FrameDecoder decoder(limit);

    std::size_t at = 1;
    std::uint64_t arrived = 0;
    while (at < size) {
        fileio::net::DecodeStatus status;
        const std::size_t n = std::min(piece, size - at);
        const std::uint64_t held = decoder.Capacity();
        const std::size_t taken = decoder.Feed(data + at, n, status);
        at += taken;
        arrived += taken;
        // No memory that no byte paid for.
        fuzz::Require(decoder.Capacity() <= held ||
                      decoder.Capacity() <= std::max<std::uint64_t>(2 * arrived, 64 * 1024));
        if (status == fileio::net::DecodeStatus::Complete) {
            const fileio::net::FrameHeader& header = decoder.Header();
            fuzz::Require(header.length <= limit &&
                          header.version == fileio::net::kProtocolVersion &&
                          (header.mode & ~fileio::net::kCarriedModeBits) == 0);
            volatile std::uint8_t sum = 0;
            for (std::uint64_t i = 0; i < header.length; ++i)
                sum = static_cast<std::uint8_t>(sum + decoder.Payload()[i]);
            decoder.Next();
            arrived = 0;
        } else if (status != fileio::net::DecodeStatus::NeedMore) {
            fuzz::Require(decoder.Feed(data, size, status) == 0); // a refused header is final
            break;
        } else {
            fuzz::Require(taken == n); // a decoder that needs more takes what it is given
        }
    }
    return 0;
}
