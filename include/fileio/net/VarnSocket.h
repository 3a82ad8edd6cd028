// VarnSocket.h - the message socket: whole streams carried between processes.
//
// A CVarnSocket connection carries messages, each the bytes of a MemoryStream in its text
// or binary form, over TCP. The stream's form travels with it: the receiver's stream is
// opened for loading with the sender's binary, byte-swap, Varn, don't-ask and
// don't-progress bits, so it reads back exactly what was written.
//
//     CVarnSocket server;                       // in the application
//     server.Listen();                          // 127.0.0.1, a port the system chooses
//     unsigned short port = server.GetPort();   // handed to the plug-in process
//     CVarnSocket peer;
//     server.Accept(peer, 5000);
//     MemoryStream request;
//     if (peer.Receive(request, 5000) == SR_OK) {
//         MemoryStream answer;
//         answer.Open(FM_STORING | FM_BINARY);
//         answer << 42;
//         peer.Reply(peer.GetRequestNumber(), answer, 5000);
//     }
//
// Deadlines. The library has no threads: every call that waits takes a timeout in
// milliseconds and returns by then (0 only looks; a negative timeout counts as 0). One
// deadline covers a whole message, however many reads it takes. A host with an event loop
// waits on GetHandle() for readability and then calls Poll.
//
// The connection. Listening is on the loopback address unless the host names another
// (numeric IPv4 or IPv6 text: names are not looked up, since a lookup cannot keep a
// deadline). Each side opens with a hello that gives the protocol version and the largest
// message it accepts; a peer of another version is refused (SR_BAD_VERSION). A message
// above the receiver's limit (64 MiB unless SetMessageLimit says otherwise) is refused by
// the sender before a byte is sent, and by the receiver from its header before any memory is
// taken, since a header may lie. Writing to a peer that has gone returns SR_PEER_CLOSED and
// never raises SIGPIPE. Close shuts the sending side first and reads what the peer still
// sends, so that the peer's last message is not lost to a reset.
//
// Results. SR_TIMED_OUT leaves the connection usable: a message partly received is
// completed by the next Receive, and a message of which nothing was sent may be sent again
// (a send that the deadline cuts off part-way closes the connection, since the peer would
// read a broken message). SR_TOO_LARGE from Send sends nothing and keeps the connection.
// Every other failure closes the connection (a stream that lost its framing cannot be
// trusted), after which calls return SR_NOT_CONNECTED; GetErrorText says what happened.
//
// Thread safety: one thread at a time per socket. Different sockets are independent.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

#include <cstdint>

class MemoryStream;

/// What a socket call did.
enum SocketResult {
    /// Done.
    SR_OK = 0,
    /// The deadline passed first. The connection stays usable.
    SR_TIMED_OUT,
    /// The peer closed the connection (between messages, or while this side was sending).
    SR_PEER_CLOSED,
    /// The connection ended inside a message (its header or its payload).
    SR_TRUNCATED,
    /// A message above the limit: the receiver's own when receiving (nothing allocated),
    /// the peer's when sending (nothing sent).
    SR_TOO_LARGE,
    /// The bytes received are not this protocol's (wrong magic, kind or mode bits, or a
    /// handshake out of order).
    SR_BAD_HEADER,
    /// The peer speaks another version of the protocol.
    SR_BAD_VERSION,
    /// The system refused; GetErrorText gives its text ("Connection refused", ...).
    SR_SYSTEM_ERROR,
    /// The socket is not connected (or not listening, for Accept).
    SR_NOT_CONNECTED,
};

/// The name of a result, for logs: "ok", "timed out", "peer closed", ...
FILEIO_API const char* GetSocketResultText(SocketResult result);

class FILEIO_API CVarnSocket {
public:
    /// The largest message a socket accepts unless SetMessageLimit says otherwise: 64 MiB.
    static constexpr unsigned long long kDefaultMessageLimit = 64ull * 1024 * 1024;

    /// A socket that is neither listening nor connected.
    CVarnSocket();
    /// Closes the connection without waiting (Close(0)).
    ~CVarnSocket();
    CVarnSocket(const CVarnSocket&) = delete;
    CVarnSocket& operator=(const CVarnSocket&) = delete;

    // ---- making a connection ---------------------------------------------------------

    /// Listens on `address` ("127.0.0.1" unless the host names another) and `port` (0: the
    /// system chooses; GetPort tells which). SR_SYSTEM_ERROR when the address is not a
    /// numeric one of this machine or the port is taken. Closes what the socket held first.
    SocketResult Listen(unsigned short port = 0, const char* address = "127.0.0.1");
    /// Waits up to `timeoutMs` for a connection on this listening socket and its hello,
    /// and makes `connection` that connection (closing what it held). Connections accepted
    /// take this socket's message limit. SR_TIMED_OUT when nobody connected in time; a
    /// connection whose hello is late is still made, and its first Receive or Send waits
    /// for the hello.
    SocketResult Accept(CVarnSocket& connection, int timeoutMs);
    /// Connects to `address`:`port` and exchanges hellos, all within `timeoutMs`.
    /// SR_SYSTEM_ERROR when the connection is refused. SR_TIMED_OUT when it is not made in
    /// time (the socket is then closed), or when it is made but the peer's hello is late
    /// (the connection is kept, and its first Receive or Send waits for the hello). Closes
    /// what the socket held first.
    SocketResult Connect(const char* address, unsigned short port, int timeoutMs);

    // ---- messages ----------------------------------------------------------------------

    /// Sends all the data of `message` (whatever its position) within `timeoutMs`, with the
    /// next request number of this side (1, 2, ...), stored in `*requestNumber` when given.
    /// SR_TOO_LARGE, with nothing sent, above the peer's limit.
    SocketResult Send(const MemoryStream& message, int timeoutMs,
                      unsigned int* requestNumber = nullptr);
    /// Sends `message` as the reply to the peer's message number `requestNumber`.
    SocketResult Reply(unsigned int requestNumber, const MemoryStream& message, int timeoutMs);
    /// Waits up to `timeoutMs` for the next whole message and puts it in `message`, opened
    /// for loading at position 0 in the sender's form (version 5.0, as any newly opened
    /// stream). GetRequestNumber and IsReply describe it. On any result but SR_OK the
    /// stream is left as it was.
    SocketResult Receive(MemoryStream& message, int timeoutMs);
    /// Receive without waiting: takes what has arrived, SR_OK when that completes a
    /// message, SR_TIMED_OUT when it does not (yet).
    SocketResult Poll(MemoryStream& message);
    /// The request number of the last message received (for a reply: the number of the
    /// message it answers).
    [[nodiscard]] unsigned int GetRequestNumber() const;
    /// Whether the last message received was a reply.
    [[nodiscard]] bool IsReply() const;

    // ---- limits and state --------------------------------------------------------------

    /// The largest message this side accepts, announced in the hello: set it before Listen
    /// or Connect (a connection keeps the limit it announced).
    void SetMessageLimit(unsigned long long bytes);
    [[nodiscard]] unsigned long long GetMessageLimit() const;
    /// The largest message the peer accepts (0 before its hello arrived).
    [[nodiscard]] unsigned long long GetPeerMessageLimit() const;
    /// The local port of a listening or connected socket (0 for neither).
    [[nodiscard]] unsigned short GetPort() const;
    /// The local address of a listening or connected socket ("127.0.0.1"; empty for neither).
    [[nodiscard]] String GetAddress() const;
    [[nodiscard]] bool IsListening() const;
    [[nodiscard]] bool IsConnected() const;
    /// The system's socket (a descriptor on POSIX, a SOCKET on Windows) for a host's event
    /// loop; -1 when there is none. The host only waits on it; it never reads or closes it.
    [[nodiscard]] std::intptr_t GetHandle() const;
    /// What the last failure was, in words ("Connection refused", "header claims 4294967296
    /// bytes, above the limit of 67108864", ...). Empty after a call that succeeded.
    [[nodiscard]] String GetErrorText() const;
    /// Ends the connection cleanly: no more sending, then up to `timeoutMs` reading (and
    /// dropping) what the peer still sends until it closes too, then closing. Messages not
    /// received by then are lost. SR_OK when the peer closed in time; SR_TIMED_OUT when it
    /// had not; the socket is closed either way.
    SocketResult Close(int timeoutMs = 0);

private:
    struct Connection;
    Connection* m_connection;
};
