// VarnSocket.cpp - the message socket over the platform's non-blocking sockets.
//
// Every wait is bounded by one deadline per call. Receiving reads straight into the
// decoder's space, which never reaches past the current message, so the bytes of the next
// message stay in the system's buffer; a complete payload is copied once, into the caller's
// stream. Sending hands the header and the stream's own bytes to the system together.

#include "fileio/net/VarnSocket.h"

#include "fileio/stream/MemoryStream.h"
#include "net/MessageFrame.h"
#include "platform/Platform.h"

#include <chrono>
#include <memory>
#include <string>

using fileio::net::DecodeStatus;
using fileio::net::FrameDecoder;
using fileio::net::FrameHeader;
using fileio::net::FrameKind;
using fileio::net::kHeaderSize;
using fileio::net::kHelloSize;
using fileio::platform::SendBuffer;
using fileio::platform::SocketHandle;
using fileio::platform::Sockets;
using fileio::platform::SocketStatus;

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kLoopback = "127.0.0.1";
/// Connections waiting to be accepted.
constexpr int kBacklog = 16;
/// The version a newly opened stream has ("not yet known").
constexpr float kNewStreamVersion = 5.0f;
/// Bytes read at a time while closing.
constexpr std::size_t kDrainChunk = 4096;

/// The end of a call's time.
class Deadline {
public:
    explicit Deadline(int timeoutMs)
        : m_at(Clock::now() + std::chrono::milliseconds(timeoutMs < 0 ? 0 : timeoutMs)) {}
    /// Milliseconds left, rounded up; 0 once the deadline has passed.
    [[nodiscard]] int Left() const {
        const auto left = m_at - Clock::now();
        if (left <= Clock::duration::zero())
            return 0;
        return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(left).count());
    }

private:
    Clock::time_point m_at;
};

} // namespace

struct CVarnSocket::Connection {
    SocketHandle handle = fileio::platform::kNoSocket;
    bool listening = false;
    bool helloReceived = false;
    unsigned long long limit = kDefaultMessageLimit;
    unsigned long long announcedLimit = 0; // the limit this connection's hello gave
    unsigned long long peerLimit = 0;
    std::unique_ptr<FrameDecoder> decoder;
    unsigned int nextRequest = 1;
    unsigned int lastRequest = 0;
    bool lastWasReply = false;
    std::string error;

    [[nodiscard]] bool Connected() const {
        return handle != fileio::platform::kNoSocket && !listening;
    }

    /// Closes the socket at once and forgets the connection (the limit stays).
    void Drop() {
        Sockets().close(handle);
        handle = fileio::platform::kNoSocket;
        listening = false;
        helloReceived = false;
        peerLimit = 0;
        decoder.reset();
        nextRequest = 1;
    }

    /// Records why a call failed; every failure but a deadline ends the connection.
    SocketResult Fail(SocketResult result, std::string why) {
        error = std::move(why);
        if (result != SR_TIMED_OUT)
            Drop();
        return result;
    }

    /// Records why a call failed and ends the connection, whatever the result.
    SocketResult Lose(SocketResult result, std::string why) {
        error = std::move(why);
        Drop();
        return result;
    }

    SocketResult TimedOut() {
        error = "timed out";
        return SR_TIMED_OUT;
    }

    /// Waits for `events` until the deadline: SR_OK when they came.
    SocketResult WaitFor(unsigned events, const Deadline& deadline) {
        const int left = deadline.Left();
        if (left == 0)
            return TimedOut();
        const int found = Sockets().wait(handle, events, left);
        if (found < 0)
            return Fail(SR_SYSTEM_ERROR, fileio::platform::System().lastErrorText());
        return found == 0 ? TimedOut() : SR_OK;
    }

    /// Starts the connection on a connected socket: the decoder, then this side's hello.
    SocketResult Start(SocketHandle connected, const Deadline& deadline) {
        handle = connected;
        announcedLimit = limit;
        decoder = std::make_unique<FrameDecoder>(limit);
        unsigned char hello[kHelloSize];
        fileio::net::EncodeHello(limit, hello);
        const SocketResult sent =
            SendFrame({.kind = FrameKind::Hello, .length = kHelloSize}, hello, deadline);
        // The hello is the first thing on a new connection: a deadline here is a failure.
        return sent == SR_TIMED_OUT ? Lose(SR_TIMED_OUT, "timed out sending the hello") : sent;
    }

    SocketResult SendFrame(const FrameHeader& header, const void* payload,
                           const Deadline& deadline) {
        unsigned char bytes[kHeaderSize];
        fileio::net::EncodeHeader(header, bytes);
        const unsigned long long total = kHeaderSize + header.length;
        unsigned long long sent = 0;
        while (sent < total) {
            SendBuffer parts[2];
            std::size_t count = 0;
            if (sent < kHeaderSize)
                parts[count++] = {bytes + sent, kHeaderSize - static_cast<std::size_t>(sent)};
            const unsigned long long payloadSent = sent < kHeaderSize ? 0 : sent - kHeaderSize;
            parts[count++] = {static_cast<const unsigned char*>(payload) + payloadSent,
                              static_cast<std::size_t>(header.length - payloadSent)};
            const fileio::platform::SocketIo io = Sockets().send(handle, parts, count);
            switch (io.status) {
            case SocketStatus::Done:
                sent += io.bytes;
                break;
            case SocketStatus::WouldBlock:
                if (const SocketResult waited =
                        WaitFor(fileio::platform::kSocketWritable, deadline);
                    waited != SR_OK) {
                    if (waited == SR_TIMED_OUT && sent != 0)
                        return Lose(SR_TIMED_OUT, "the deadline cut a message off after " +
                                                      std::to_string(sent) + " of " +
                                                      std::to_string(total) + " bytes");
                    return waited;
                }
                break;
            case SocketStatus::Closed:
                return Fail(SR_PEER_CLOSED, "the peer closed the connection (" + io.error + ")");
            case SocketStatus::Failed:
                return Fail(SR_SYSTEM_ERROR, io.error);
            }
        }
        return SR_OK;
    }

    /// Reads until the decoder holds a whole message.
    SocketResult ReceiveFrame(const Deadline& deadline) {
        for (;;) {
            switch (decoder->Status()) {
            case DecodeStatus::Complete:
                return SR_OK;
            case DecodeStatus::NeedMore:
                break;
            case DecodeStatus::BadHeader:
                return Fail(SR_BAD_HEADER, "the peer sent bytes that are not a message header");
            case DecodeStatus::BadVersion:
                return Fail(SR_BAD_VERSION, "the peer speaks version " +
                                                std::to_string(decoder->Header().version) +
                                                " of the protocol, this side version " +
                                                std::to_string(fileio::net::kProtocolVersion));
            case DecodeStatus::TooLarge:
                return Fail(SR_TOO_LARGE,
                            "a message of " + std::to_string(decoder->Header().length) +
                                " bytes is above the limit of " + std::to_string(announcedLimit));
            }
            const std::span<unsigned char> space = decoder->Space();
            const fileio::platform::SocketIo io =
                Sockets().receive(handle, space.data(), space.size());
            switch (io.status) {
            case SocketStatus::Done:
                decoder->Commit(io.bytes);
                break;
            case SocketStatus::WouldBlock:
                if (const SocketResult waited =
                        WaitFor(fileio::platform::kSocketReadable, deadline);
                    waited != SR_OK)
                    return waited;
                break;
            case SocketStatus::Closed:
                if (decoder->InMessage())
                    return Fail(SR_TRUNCATED, "the connection ended inside a message");
                return Fail(SR_PEER_CLOSED, "the peer closed the connection");
            case SocketStatus::Failed:
                return Fail(SR_SYSTEM_ERROR, io.error);
            }
        }
    }

    /// Takes the peer's hello if it has not come yet.
    SocketResult AwaitHello(const Deadline& deadline) {
        if (helloReceived)
            return SR_OK;
        if (const SocketResult received = ReceiveFrame(deadline); received != SR_OK)
            return received;
        if (decoder->Header().kind != FrameKind::Hello)
            return Fail(SR_BAD_HEADER, "the peer's first message is not a hello");
        peerLimit = fileio::net::DecodeHello(decoder->Payload());
        helloReceived = true;
        decoder->Next();
        return SR_OK;
    }

    SocketResult SendMessage(FrameKind kind, unsigned int request, const MemoryStream& message,
                             int timeoutMs) {
        error.clear();
        if (!Connected())
            return Fail(SR_NOT_CONNECTED, "the socket is not connected");
        const Deadline deadline(timeoutMs);
        if (const SocketResult hello = AwaitHello(deadline); hello != SR_OK)
            return hello;
        if (message.GetLength() > peerLimit) {
            // Nothing was sent: the connection stays as it was.
            error = "a message of " + std::to_string(message.GetLength()) +
                    " bytes is above the peer's limit of " + std::to_string(peerLimit);
            return SR_TOO_LARGE;
        }
        const FrameHeader header{
            .kind = kind,
            .mode = static_cast<unsigned char>(message.GetMode() & fileio::net::kCarriedModeBits),
            .request = request,
            .length = message.GetLength(),
        };
        return SendFrame(header, message.GetData(), deadline);
    }
};

const char* GetSocketResultText(SocketResult result) {
    switch (result) {
    case SR_OK:
        return "ok";
    case SR_TIMED_OUT:
        return "timed out";
    case SR_PEER_CLOSED:
        return "peer closed";
    case SR_TRUNCATED:
        return "truncated";
    case SR_TOO_LARGE:
        return "too large";
    case SR_BAD_HEADER:
        return "bad header";
    case SR_BAD_VERSION:
        return "bad version";
    case SR_SYSTEM_ERROR:
        return "system error";
    case SR_NOT_CONNECTED:
        return "not connected";
    }
    return "unknown result";
}

CVarnSocket::CVarnSocket() : m_connection(new Connection) {}

CVarnSocket::~CVarnSocket() {
    Close(0);
    delete m_connection;
}

SocketResult CVarnSocket::Listen(unsigned short port, const char* address) {
    Close(0);
    Connection& c = *m_connection;
    c.error.clear();
    std::string why;
    const SocketHandle handle =
        Sockets().listen(address != nullptr ? address : kLoopback, port, kBacklog, why);
    if (handle == fileio::platform::kNoSocket)
        return c.Fail(SR_SYSTEM_ERROR, why);
    c.handle = handle;
    c.listening = true;
    return SR_OK;
}

SocketResult CVarnSocket::Accept(CVarnSocket& connection, int timeoutMs) {
    Connection& c = *m_connection;
    c.error.clear();
    if (!c.listening) {
        c.error = "the socket is not listening";
        return SR_NOT_CONNECTED;
    }
    const Deadline deadline(timeoutMs);
    SocketHandle accepted = fileio::platform::kNoSocket;
    for (;;) {
        const fileio::platform::SocketIo io = Sockets().accept(c.handle, accepted);
        if (io.status == SocketStatus::Done)
            break;
        if (io.status != SocketStatus::WouldBlock) {
            c.error = io.error; // the listening socket itself stays
            return SR_SYSTEM_ERROR;
        }
        if (const SocketResult waited = c.WaitFor(fileio::platform::kSocketReadable, deadline);
            waited != SR_OK)
            return waited;
    }
    connection.Close(0);
    Connection& peer = *connection.m_connection;
    peer.error.clear();
    peer.limit = c.limit;
    SocketResult result = peer.Start(accepted, deadline);
    if (result == SR_OK)
        result = peer.AwaitHello(deadline);
    if (result == SR_TIMED_OUT && peer.Connected())
        return SR_OK; // made; the first call on it waits for the hello
    c.error = peer.error;
    return result;
}

SocketResult CVarnSocket::Connect(const char* address, unsigned short port, int timeoutMs) {
    Close(0);
    Connection& c = *m_connection;
    c.error.clear();
    const Deadline deadline(timeoutMs);
    SocketHandle connecting = fileio::platform::kNoSocket;
    const fileio::platform::SocketIo started =
        Sockets().connect(address != nullptr ? address : kLoopback, port, connecting);
    if (started.status != SocketStatus::Done)
        return c.Fail(SR_SYSTEM_ERROR, started.error);
    c.handle = connecting;
    if (const SocketResult waited = c.WaitFor(fileio::platform::kSocketWritable, deadline);
        waited != SR_OK)
        return c.Lose(waited, waited == SR_TIMED_OUT ? "timed out connecting" : c.error);
    if (const fileio::platform::SocketIo made = Sockets().finishConnect(connecting);
        made.status != SocketStatus::Done)
        return c.Fail(SR_SYSTEM_ERROR, made.error);
    if (const SocketResult result = c.Start(connecting, deadline); result != SR_OK)
        return result;
    return c.AwaitHello(deadline);
}

SocketResult CVarnSocket::Send(const MemoryStream& message, int timeoutMs,
                               unsigned int* requestNumber) {
    Connection& c = *m_connection;
    const unsigned int number = c.nextRequest;
    const SocketResult result = c.SendMessage(FrameKind::Message, number, message, timeoutMs);
    if (result == SR_OK) {
        c.nextRequest = number + 1 == 0 ? 1 : number + 1; // 0 is never a request number
        if (requestNumber != nullptr)
            *requestNumber = number;
    }
    return result;
}

SocketResult CVarnSocket::Reply(unsigned int requestNumber, const MemoryStream& message,
                                int timeoutMs) {
    return m_connection->SendMessage(FrameKind::Reply, requestNumber, message, timeoutMs);
}

SocketResult CVarnSocket::Receive(MemoryStream& message, int timeoutMs) {
    Connection& c = *m_connection;
    c.error.clear();
    if (!c.Connected())
        return c.Fail(SR_NOT_CONNECTED, "the socket is not connected");
    const Deadline deadline(timeoutMs);
    if (const SocketResult hello = c.AwaitHello(deadline); hello != SR_OK)
        return hello;
    if (const SocketResult received = c.ReceiveFrame(deadline); received != SR_OK)
        return received;
    const FrameHeader& header = c.decoder->Header();
    if (header.kind == FrameKind::Hello)
        return c.Fail(SR_BAD_HEADER, "the peer sent a second hello");
    // As Open(data, length, mode) would, but into the block the stream already holds.
    message.Assign(c.decoder->Payload(), header.length);
    message.SetVersion(kNewStreamVersion);
    message.Open(static_cast<FileMode>(header.mode) | FM_LOADING);
    c.lastRequest = header.request;
    c.lastWasReply = header.kind == FrameKind::Reply;
    c.decoder->Next();
    return SR_OK;
}

SocketResult CVarnSocket::Poll(MemoryStream& message) {
    return Receive(message, 0);
}

unsigned int CVarnSocket::GetRequestNumber() const {
    return m_connection->lastRequest;
}

bool CVarnSocket::IsReply() const {
    return m_connection->lastWasReply;
}

void CVarnSocket::SetMessageLimit(unsigned long long bytes) {
    m_connection->limit = bytes;
}

unsigned long long CVarnSocket::GetMessageLimit() const {
    return m_connection->limit;
}

unsigned long long CVarnSocket::GetPeerMessageLimit() const {
    return m_connection->peerLimit;
}

unsigned short CVarnSocket::GetPort() const {
    std::string address;
    unsigned short port = 0;
    if (m_connection->handle == fileio::platform::kNoSocket ||
        !Sockets().localAddress(m_connection->handle, address, port))
        return 0;
    return port;
}

String CVarnSocket::GetAddress() const {
    std::string address;
    unsigned short port = 0;
    if (m_connection->handle == fileio::platform::kNoSocket ||
        !Sockets().localAddress(m_connection->handle, address, port))
        return String();
    return String(address);
}

bool CVarnSocket::IsListening() const {
    return m_connection->listening;
}

bool CVarnSocket::IsConnected() const {
    return m_connection->Connected();
}

std::intptr_t CVarnSocket::GetHandle() const {
    return m_connection->handle;
}

String CVarnSocket::GetErrorText() const {
    return String(m_connection->error);
}

SocketResult CVarnSocket::Close(int timeoutMs) {
    Connection& c = *m_connection;
    if (!c.Connected()) {
        c.Drop();
        return SR_OK;
    }
    c.error.clear();
    const Deadline deadline(timeoutMs);
    Sockets().shutdownSend(c.handle);
    SocketResult result = SR_OK;
    unsigned char scratch[kDrainChunk];
    for (bool draining = true; draining;) {
        const fileio::platform::SocketIo io = Sockets().receive(c.handle, scratch, sizeof scratch);
        switch (io.status) {
        case SocketStatus::Done:
            // A peer that keeps sending cannot hold the close past its deadline.
            if (deadline.Left() == 0) {
                result = c.TimedOut();
                draining = false;
            }
            break;
        case SocketStatus::WouldBlock:
            result = c.WaitFor(fileio::platform::kSocketReadable, deadline);
            draining = result == SR_OK;
            break;
        case SocketStatus::Closed:
        case SocketStatus::Failed:
            draining = false;
            break;
        }
    }
    c.Drop();
    return result;
}
