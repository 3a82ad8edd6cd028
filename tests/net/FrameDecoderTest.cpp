// FrameDecoderTest.cpp - the framing without a socket.

#include "net/MessageFrame.h"
#include "net/NetTestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

using namespace fileio::net;
using fileio::test::Header;

constexpr std::uint64_t kLimit = 1000;

/// Feeds `bytes` in pieces of `piece` bytes; returns the status and the bytes taken.
DecodeStatus FeedInPieces(FrameDecoder& decoder, const std::string& bytes, std::size_t piece,
                          std::size_t& taken) {
    taken = 0;
    DecodeStatus status = decoder.Status();
    while (taken < bytes.size() && status == DecodeStatus::NeedMore) {
        const std::size_t n = std::min(piece, bytes.size() - taken);
        const std::size_t used = decoder.Feed(bytes.data() + taken, n, status);
        EXPECT_LE(used, n);
        taken += used;
        if (used < n)
            break;
    }
    return status;
}

TEST(FrameDecoderTest, TheHeaderIsTwentyLittleEndianBytes) {
    const FrameHeader header{
        .kind = FrameKind::Reply, .mode = 0x22, .request = 0x01020304, .length = 0x0A0B0C0D0E0FULL};
    unsigned char bytes[fileio::net::kHeaderSize];
    fileio::net::EncodeHeader(header, bytes);
    EXPECT_THAT(bytes,
                ::testing::ElementsAre('V', 'R', 'N', 'M', 0x01, 0x00, 0x03, 0x22, 0x04, 0x03, 0x02,
                                       0x01, 0x0F, 0x0E, 0x0D, 0x0C, 0x0B, 0x0A, 0x00, 0x00));

    unsigned char hello[fileio::net::kHelloSize];
    fileio::net::EncodeHello(0x0102030405060708ULL, hello);
    EXPECT_EQ(hello[0], 0x08);
    EXPECT_EQ(fileio::net::DecodeHello(hello), 0x0102030405060708ULL);
}

// A message exactly at the decoder's limit, with every mode bit a message may carry.
TEST(FrameDecoderTest, DecodesAMessageInEverySplit) {
    const std::string payload = "<HEAD>\nName=robot\n</HEAD>\n";
    const std::string bytes =
        Header(2, payload.size(), 7, 0x02 | 0x04 | 0x20 | 0x40 | 0x80) + payload;
    for (const std::size_t piece :
         {std::size_t{1}, std::size_t{19}, std::size_t{20}, std::size_t{21}, bytes.size()}) {
        SCOPED_TRACE(piece);
        FrameDecoder decoder(payload.size());
        std::size_t taken = 0;
        ASSERT_EQ(FeedInPieces(decoder, bytes, piece, taken), DecodeStatus::Complete);
        EXPECT_EQ(taken, bytes.size());
        EXPECT_EQ(decoder.Header().kind, FrameKind::Message);
        EXPECT_EQ(decoder.Header().request, 7u);
        EXPECT_EQ(decoder.Header().mode, 0xE6);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(decoder.Payload()), payload.size()),
                  payload);
    }
}

TEST(FrameDecoderTest, StopsAtTheEndOfEachMessage) {
    FrameDecoder decoder(kLimit);
    EXPECT_FALSE(decoder.InMessage());
    DecodeStatus status;
    const std::string partial = Header(2, 10) + "12345";
    decoder.Feed(partial.data(), 1, status);
    EXPECT_TRUE(decoder.InMessage()); // mid-header
    decoder.Feed(partial.data() + 1, partial.size() - 1, status);
    EXPECT_EQ(status, DecodeStatus::NeedMore);
    EXPECT_TRUE(decoder.InMessage());      // mid-payload
    EXPECT_EQ(decoder.Space().size(), 5u); // never more than the message still needs

    FrameDecoder next(kLimit);
    const std::string first = Header(2, 3, 1) + "abc";
    const std::string second = Header(3, 0, 1);
    const std::string both = first + second;
    EXPECT_EQ(next.Feed(both.data(), both.size(), status), first.size());
    ASSERT_EQ(status, DecodeStatus::Complete);
    EXPECT_FALSE(next.InMessage());
    // Complete holds until Next: more bytes are refused.
    EXPECT_EQ(next.Feed(second.data(), second.size(), status), 0u);
    next.Next();
    EXPECT_EQ(next.Feed(second.data(), second.size(), status), second.size());
    EXPECT_EQ(status, DecodeStatus::Complete); // an empty payload completes with its header
    EXPECT_EQ(next.Header().kind, FrameKind::Reply);
}

TEST(FrameDecoderTest, RefusesHeadersThatBreakTheRules) {
    std::string wrongMagic = Header(2, 1);
    wrongMagic[0] = 'v';
    const std::tuple<const char*, std::string, DecodeStatus> cases[] = {
        {"wrong magic", wrongMagic, DecodeStatus::BadHeader},
        {"another version", Header(2, 1, 0, 0, 2), DecodeStatus::BadVersion},
        {"version 0", Header(2, 1, 0, 0, 0), DecodeStatus::BadVersion},
        {"kind 0", Header(0, 1), DecodeStatus::BadHeader},
        {"kind 4", Header(4, 1), DecodeStatus::BadHeader},
        {"loading bit", Header(2, 1, 0, 0x01), DecodeStatus::BadHeader},
        {"short hello", Header(1, 7), DecodeStatus::BadHeader},
        {"limit plus one", Header(2, kLimit + 1), DecodeStatus::TooLarge},
        {"largest length", Header(2, ~0ULL), DecodeStatus::TooLarge},
    };
    for (const auto& [what, bytes, expected] : cases) {
        SCOPED_TRACE(what);
        FrameDecoder decoder(kLimit);
        std::size_t taken = 0;
        // One byte at a time: the verdict comes with the 20th byte, not before.
        const std::string withMore = bytes + "more bytes";
        EXPECT_EQ(FeedInPieces(decoder, withMore, 1, taken), expected);
        EXPECT_EQ(taken, 20u);
        EXPECT_EQ(decoder.Capacity(), 0u); // nothing allocated for a refused message
        EXPECT_TRUE(decoder.Space().empty());
        DecodeStatus status;
        EXPECT_EQ(decoder.Feed("x", 1, status), 0u); // final
        EXPECT_EQ(status, expected);
    }
}

TEST(FrameDecoderTest, PayloadMemoryGrowsOnlyAsBytesArrive) {
    constexpr std::uint64_t kHuge = 1ULL << 32;
    FrameDecoder decoder(kHuge);
    const std::string header = Header(2, kHuge);
    DecodeStatus status;
    decoder.Feed(header.data(), header.size(), status);
    EXPECT_EQ(decoder.Capacity(), 0u); // a header alone costs nothing
    const std::string some(100, 'x');
    decoder.Feed(some.data(), some.size(), status);
    EXPECT_EQ(status, DecodeStatus::NeedMore);
    EXPECT_EQ(decoder.Capacity(), 64u * 1024); // the first step, not the claimed 4 GiB
    const std::string more(200 * 1024, 'y');
    decoder.Feed(more.data(), more.size(), status);
    EXPECT_LE(decoder.Capacity(), 2 * (100 + more.size()) + 64 * 1024);
    // A short message never takes more than its own length.
    FrameDecoder small(kHuge);
    const std::string message = Header(2, 5) + "hello";
    small.Feed(message.data(), message.size(), status);
    EXPECT_EQ(status, DecodeStatus::Complete);
    EXPECT_EQ(small.Capacity(), 5u);
}

} // namespace
