// MessageFrame.cpp - the header's bytes and the incremental decoder.

#include "net/MessageFrame.h"

#include "fileio/memory/Pool.h"

#include <algorithm>
#include <cstring>

namespace fileio::net {

namespace {

/// The payload memory taken first; it doubles from there as bytes arrive.
constexpr std::uint64_t kFirstCapacity = 64 * 1024;
/// Payload memory above this size is given back when its message is done; below it, it is
/// kept for the next message.
constexpr std::uint64_t kKeptCapacity = 4 * 1024 * 1024;

// Header offsets.
constexpr std::size_t kVersionAt = 4, kKindAt = 6, kModeAt = 7, kRequestAt = 8, kLengthAt = 12;

void PutLittleEndian(unsigned char* out, std::uint64_t value, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i)
        out[i] = static_cast<unsigned char>(value >> (8 * i));
}

std::uint64_t GetLittleEndian(const unsigned char* in, std::size_t bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = bytes; i-- > 0;)
        value = (value << 8) | in[i];
    return value;
}

} // namespace

void EncodeHeader(const FrameHeader& header, unsigned char (&out)[kHeaderSize]) {
    std::memcpy(out, kMagic, sizeof kMagic);
    PutLittleEndian(out + kVersionAt, header.version, 2);
    out[kKindAt] = static_cast<unsigned char>(header.kind);
    out[kModeAt] = header.mode;
    PutLittleEndian(out + kRequestAt, header.request, 4);
    PutLittleEndian(out + kLengthAt, header.length, 8);
}

void EncodeHello(std::uint64_t limit, unsigned char (&out)[kHelloSize]) {
    PutLittleEndian(out, limit, kHelloSize);
}

std::uint64_t DecodeHello(const unsigned char* payload) {
    return GetLittleEndian(payload, kHelloSize);
}

FrameDecoder::FrameDecoder(std::uint64_t limit) : m_limit(limit) {}

FrameDecoder::~FrameDecoder() {
    PlatformFree(m_payload);
}

bool FrameDecoder::InMessage() const {
    return m_status == DecodeStatus::NeedMore && m_headerGot != 0;
}

std::span<unsigned char> FrameDecoder::Space() {
    if (m_status != DecodeStatus::NeedMore)
        return {};
    if (m_headerGot < kHeaderSize)
        return {m_headerBytes + m_headerGot, kHeaderSize - m_headerGot};
    if (m_payloadGot == m_capacity)
        Grow();
    const std::uint64_t room = std::min(m_capacity, m_header.length) - m_payloadGot;
    return {m_payload + m_payloadGot, static_cast<std::size_t>(room)};
}

DecodeStatus FrameDecoder::Commit(std::size_t count) {
    if (m_status != DecodeStatus::NeedMore || count == 0)
        return m_status;
    if (m_headerGot < kHeaderSize) {
        m_headerGot += count;
        if (m_headerGot < kHeaderSize)
            return m_status;
        m_status = CheckHeader();
        if (m_status != DecodeStatus::NeedMore)
            return m_status;
    } else {
        m_payloadGot += count;
    }
    if (m_payloadGot == m_header.length)
        m_status = DecodeStatus::Complete;
    return m_status;
}

std::size_t FrameDecoder::Feed(const void* data, std::size_t size, DecodeStatus& status) {
    const auto* from = static_cast<const unsigned char*>(data);
    std::size_t taken = 0;
    status = m_status;
    while (status == DecodeStatus::NeedMore && taken < size) {
        const std::span<unsigned char> space = Space();
        const std::size_t n = std::min(space.size(), size - taken);
        std::memcpy(space.data(), from + taken, n);
        taken += n;
        status = Commit(n);
    }
    return taken;
}

void FrameDecoder::Next() {
    if (m_status != DecodeStatus::Complete)
        return;
    m_status = DecodeStatus::NeedMore;
    m_headerGot = 0;
    m_payloadGot = 0;
    m_header = FrameHeader();
    if (m_capacity > kKeptCapacity) {
        PlatformFree(m_payload);
        m_payload = nullptr;
        m_capacity = 0;
    }
}

DecodeStatus FrameDecoder::CheckHeader() {
    if (std::memcmp(m_headerBytes, kMagic, sizeof kMagic) != 0)
        return DecodeStatus::BadHeader;
    m_header.version = static_cast<std::uint16_t>(GetLittleEndian(m_headerBytes + kVersionAt, 2));
    if (m_header.version != kProtocolVersion)
        return DecodeStatus::BadVersion;
    const unsigned char kind = m_headerBytes[kKindAt];
    if (kind < static_cast<unsigned char>(FrameKind::Hello) ||
        kind > static_cast<unsigned char>(FrameKind::Reply))
        return DecodeStatus::BadHeader;
    m_header.kind = static_cast<FrameKind>(kind);
    m_header.mode = m_headerBytes[kModeAt];
    if ((m_header.mode & ~kCarriedModeBits) != 0)
        return DecodeStatus::BadHeader;
    m_header.request = static_cast<std::uint32_t>(GetLittleEndian(m_headerBytes + kRequestAt, 4));
    m_header.length = GetLittleEndian(m_headerBytes + kLengthAt, 8);
    if (m_header.kind == FrameKind::Hello && m_header.length != kHelloSize)
        return DecodeStatus::BadHeader;
    if (m_header.length > m_limit)
        return DecodeStatus::TooLarge;
    return DecodeStatus::NeedMore;
}

void FrameDecoder::Grow() {
    const std::uint64_t capacity =
        std::min(m_header.length, std::max(kFirstCapacity, m_capacity * 2));
    auto* payload = static_cast<unsigned char*>(PlatformAlloc(capacity));
    if (m_payloadGot != 0)
        std::memcpy(payload, m_payload, static_cast<std::size_t>(m_payloadGot));
    PlatformFree(m_payload);
    m_payload = payload;
    m_capacity = capacity;
}

} // namespace fileio::net
