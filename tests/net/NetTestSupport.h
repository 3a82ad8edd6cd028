// NetTestSupport.h - what the networking tests share. Every wait and loop here is bounded.
#pragma once

#include "fileio/net/VarnSocket.h"
#include "fileio/stream/MemoryStream.h"
#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <future>
#include <string>
#include <string_view>
#include <vector>

namespace fileio::test {

/// Long enough for a loaded machine, short enough that a hang fails the test, not the run.
inline constexpr int kPatientMs = 20000;

/// A loopback address on which no test listens for long: a port closed there stays closed
/// while tests run in parallel (the others listen on 127.0.0.1 and 127.0.0.2).
inline constexpr const char* kUnusedLoopback = "127.0.0.3";

/// The argument that makes this test program act as a child (see NetTestMain.cpp).
inline constexpr const char* kChildArgument = "--fileio-net-child";

/// The lowest `count` bytes of `value`, the lowest first.
inline std::string LittleEndian(std::uint64_t value, int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i)
        bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
    return bytes;
}

/// The bytes of a 20-byte frame header, written out field by field.
inline std::string Header(std::uint8_t kind, std::uint64_t length, std::uint32_t request = 0,
                          std::uint8_t mode = 0, std::uint16_t version = 1) {
    return "VRNM" + LittleEndian(version, 2) + static_cast<char>(kind) + static_cast<char>(mode) +
           LittleEndian(request, 4) + LittleEndian(length, 8);
}

/// A whole hello announcing `limit`.
inline std::string Hello(std::uint64_t limit = 1 << 20, std::uint16_t version = 1) {
    return Header(1, 8, 0, 0, version) + LittleEndian(limit, 8);
}

/// A pattern that shows a byte out of place.
inline std::string Pattern(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>((i * 131 + i / 251) & 0xFF);
    return bytes;
}

inline MemoryStream StreamOf(const std::string& bytes, bool binary = false) {
    MemoryStream stream;
    stream.Open(binary ? FM_BINARY : FM_STORING);
    stream.Write(bytes.data(), bytes.size());
    return stream;
}

inline std::string BytesOf(const MemoryStream& stream) {
    return stream.GetLength() == 0
               ? std::string()
               : std::string(reinterpret_cast<const char*>(stream.GetData()), stream.GetLength());
}

/// A TCP connection made with the platform's sockets, bypassing the message socket, so
/// that a test can send any bytes at all.
class RawPeer {
public:
    RawPeer() = default;
    ~RawPeer() { Close(); }
    RawPeer(const RawPeer&) = delete;
    RawPeer& operator=(const RawPeer&) = delete;

    bool Connect(unsigned short port) {
        using namespace fileio::platform;
        if (Sockets().connect("127.0.0.1", port, m_socket).status != SocketStatus::Done)
            return false;
        return Sockets().wait(m_socket, kSocketWritable, kPatientMs) > 0 &&
               Sockets().finishConnect(m_socket).status == SocketStatus::Done;
    }

    /// Sends all of `bytes`; false when the connection failed first.
    bool Send(const std::string& bytes) {
        using namespace fileio::platform;
        std::size_t sent = 0;
        for (int round = 0; round < kMaxRounds && sent < bytes.size(); ++round) {
            const SendBuffer part{bytes.data() + sent, bytes.size() - sent};
            const SocketIo io = Sockets().send(m_socket, &part, 1);
            if (io.status == SocketStatus::Done)
                sent += io.bytes;
            else if (io.status != SocketStatus::WouldBlock ||
                     Sockets().wait(m_socket, kSocketWritable, kPatientMs) <= 0)
                return false;
        }
        return sent == bytes.size();
    }

    /// Accepts the next connection on `listener`; false when none came in time.
    bool Accept(fileio::platform::SocketHandle listener) {
        using namespace fileio::platform;
        for (int round = 0; round < kMaxRounds && m_socket == kNoSocket; ++round)
            if (Sockets().wait(listener, kSocketReadable, kPatientMs) <= 0)
                return false;
            else
                Sockets().accept(listener, m_socket);
        return m_socket != kNoSocket;
    }

    /// Receives until the bytes received end with `end` or the connection ends.
    std::string ReceiveUntil(std::string_view end) {
        using namespace fileio::platform;
        std::string got;
        char buffer[4096];
        while (!got.ends_with(end) && Sockets().wait(m_socket, kSocketReadable, kPatientMs) > 0) {
            const SocketIo io = Sockets().receive(m_socket, buffer, sizeof buffer);
            if (io.status != SocketStatus::Done || io.bytes == 0)
                break;
            got.append(buffer, io.bytes);
        }
        return got;
    }

    /// Ends the connection the orderly way: what was sent is followed by the end of data.
    void Close() {
        fileio::platform::Sockets().shutdownSend(m_socket);
        fileio::platform::Sockets().close(m_socket);
        m_socket = fileio::platform::kNoSocket;
    }

private:
    static constexpr int kMaxRounds = 100000;
    fileio::platform::SocketHandle m_socket = fileio::platform::kNoSocket;
};

/// A message socket and the raw peer it accepted: a peer that may break the protocol.
struct RawPair {
    CVarnSocket listener;
    CVarnSocket socket; // the accepted side
    RawPeer peer;

    /// The raw peer sends `opening` (a hello, usually) before the accept.
    SocketResult Open(const std::string& opening, int acceptTimeoutMs = kPatientMs) {
        if (listener.Listen() != SR_OK || !peer.Connect(listener.GetPort()) || !peer.Send(opening))
            return SR_SYSTEM_ERROR;
        return listener.Accept(socket, acceptTimeoutMs);
    }
};

/// Two message sockets connected to each other over loopback.
struct SocketPair {
    CVarnSocket listener;
    CVarnSocket client;
    CVarnSocket server;

    bool Open(unsigned long long limit = CVarnSocket::kDefaultMessageLimit) {
        client.SetMessageLimit(limit);
        listener.SetMessageLimit(limit);
        if (listener.Listen() != SR_OK)
            return false;
        auto accepted =
            std::async(std::launch::async, [this] { return listener.Accept(server, kPatientMs); });
        const SocketResult connected = client.Connect("127.0.0.1", listener.GetPort(), kPatientMs);
        return accepted.get() == SR_OK && connected == SR_OK;
    }
};

/// This test program's executable, to start it again as a child.
inline std::string SelfPath() {
    using fileio::platform::System;
    const std::string base = System().applicationFolder() + fileio::platform::NativeSeparator() +
                             System().applicationName();
    return fileio::platform::Files().exists(base.c_str()) ? base : base + ".exe";
}

/// A socket listening on `address` at a port the system chose, which goes to `port`.
inline fileio::platform::SocketHandle ListenAt(const char* address, unsigned short& port) {
    using namespace fileio::platform;
    std::string why, bound;
    const SocketHandle listener = Sockets().listen(address, 0, 4, why);
    Sockets().localAddress(listener, bound, port);
    return listener;
}

/// A port of kUnusedLoopback that was listened on a moment ago and is closed again.
inline unsigned short ClosedPort() {
    unsigned short port = 0;
    fileio::platform::Sockets().close(ListenAt(kUnusedLoopback, port));
    return port;
}

} // namespace fileio::test
