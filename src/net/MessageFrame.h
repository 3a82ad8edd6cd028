// MessageFrame.h - the framing of the message socket: the header's layout and an
// incremental decoder that turns the bytes of a connection into whole messages.
//
// Every message is a 20-byte header followed by its payload. All fields are little-endian:
//
//     offset  size  field
//     0       4     magic: the bytes "VRNM"
//     4       2     version: 1
//     6       1     kind: 1 hello, 2 message, 3 reply
//     7       1     mode: the stream's form bits (binary, byte swap, Varn, don't ask,
//                   don't progress); the loading, append and failed bits are always clear
//     8       4     request number: the sender's count for a message, the number of the
//                   message answered for a reply, 0 for a hello
//     12      8     payload length in bytes
//
// A hello carries 8 bytes: the largest payload its sender accepts (little-endian). Each side
// sends one as soon as the connection is made and takes the peer's as the first message.
//
// The decoder checks a header as soon as its 20 bytes are in: a wrong magic, an unknown
// kind, a mode with a reserved bit or a hello of another size is a bad header; another
// version is a bad version; a length above the limit is too large. Each of these is decided
// before any payload memory is taken, and each is final: the decoder takes no more bytes.
// The payload buffer grows only as bytes arrive (doubling from 64 KiB, never past the
// announced length), so a header that lies about its length costs nothing until the bytes
// are really sent. The decoder never reads past the end of the current message: the bytes
// after it stay with the caller for the next one.
//
// The decoder is pure: it makes no system call. The socket feeds it from the connection,
// the tests and the fuzz target feed it directly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace fileio::net {

inline constexpr std::size_t kHeaderSize = 20;
inline constexpr unsigned char kMagic[4] = {'V', 'R', 'N', 'M'};
inline constexpr std::uint16_t kProtocolVersion = 1;
inline constexpr std::size_t kHelloSize = 8;
/// The mode bits a message carries: binary, byte swap, Varn, don't ask, don't progress.
inline constexpr unsigned char kCarriedModeBits = 0x02 | 0x04 | 0x20 | 0x40 | 0x80;

enum class FrameKind : unsigned char { Hello = 1, Message = 2, Reply = 3 };

/// The fields of a header after the magic.
struct FrameHeader {
    std::uint16_t version = kProtocolVersion;
    FrameKind kind = FrameKind::Message;
    unsigned char mode = 0;
    std::uint32_t request = 0;
    std::uint64_t length = 0;
};

/// Writes the 20 bytes of `header`, after the magic.
void EncodeHeader(const FrameHeader& header, unsigned char (&out)[kHeaderSize]);

/// Writes the 8 bytes of a hello's payload.
void EncodeHello(std::uint64_t limit, unsigned char (&out)[kHelloSize]);

/// Reads the limit from a hello's payload.
std::uint64_t DecodeHello(const unsigned char* payload);

/// Where the decoder stands.
enum class DecodeStatus {
    NeedMore,   ///< the current message is not complete yet
    Complete,   ///< Header() and Payload() hold a whole message; Next() starts the next one
    BadHeader,  ///< not a header of this protocol (final)
    BadVersion, ///< a header of another version (final)
    TooLarge,   ///< a length above the limit (final)
};

class FrameDecoder {
public:
    /// A decoder that refuses payloads longer than `limit` bytes.
    explicit FrameDecoder(std::uint64_t limit);
    ~FrameDecoder();
    FrameDecoder(const FrameDecoder&) = delete;
    FrameDecoder& operator=(const FrameDecoder&) = delete;

    /// Where the next bytes of the connection go: never more than the current message still
    /// needs, and never empty unless the status is Complete or final.
    std::span<unsigned char> Space();
    /// Takes the first `count` bytes written into Space().
    DecodeStatus Commit(std::size_t count);
    /// Copies bytes from `data` into the decoder until the current message is complete,
    /// the status is final or the bytes run out. Returns the bytes taken; `status` tells
    /// where the decoder stands.
    std::size_t Feed(const void* data, std::size_t size, DecodeStatus& status);
    /// After Complete: forgets the message and starts on the next one.
    void Next();

    [[nodiscard]] DecodeStatus Status() const { return m_status; }
    /// Some bytes of a message that is not complete have arrived.
    [[nodiscard]] bool InMessage() const;
    /// The header (valid once its 20 bytes are in).
    [[nodiscard]] const FrameHeader& Header() const { return m_header; }
    /// The payload (complete when the status is Complete).
    [[nodiscard]] const unsigned char* Payload() const { return m_payload; }
    /// Bytes of payload memory held.
    [[nodiscard]] std::uint64_t Capacity() const { return m_capacity; }

private:
    DecodeStatus CheckHeader();
    void Grow();

    std::uint64_t m_limit;
    DecodeStatus m_status = DecodeStatus::NeedMore;
    unsigned char m_headerBytes[kHeaderSize] = {};
    std::size_t m_headerGot = 0;
    FrameHeader m_header;
    unsigned char* m_payload = nullptr;
    std::uint64_t m_capacity = 0;
    std::uint64_t m_payloadGot = 0;
};

} // namespace fileio::net
