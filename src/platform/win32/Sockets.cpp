// Sockets.cpp - non-blocking TCP sockets, Win32 implementation (Winsock 2).
//
// Winsock is started once, on first use, and left running until the process ends. Sockets
// are made non-inheritable, so that a child process never holds a connection open, and a
// listening socket takes its port exclusively (SO_EXCLUSIVEADDRUSE). Waiting uses select,
// whose exception set reports a failed connection attempt.

#include "platform/Platform.h"

#include <cstring>
#include <string>

// winsock2.h must come before windows.h.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <windows.h>

namespace fileio::platform {

namespace {

/// The most buffers one send passes to the system.
constexpr std::size_t kMaxSendBuffers = 16;
/// The most bytes one WSABUF holds.
constexpr std::size_t kMaxBufferBytes = 0x40000000u;

void StartWinsock() {
    static const bool started = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }();
    (void)started;
}

std::string ErrorText(int code) {
    char* text = nullptr;
    const DWORD n = FormatMessageA(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<char*>(&text), 0, nullptr);
    std::string out =
        n > 0 && text != nullptr ? std::string(text, n) : "socket error " + std::to_string(code);
    if (text != nullptr)
        LocalFree(text);
    while (!out.empty() &&
           (out.back() == '\n' || out.back() == '\r' || out.back() == ' ' || out.back() == '.'))
        out.pop_back();
    return out;
}

/// An outcome without a failure text.
SocketIo Io(SocketStatus status, std::size_t bytes = 0) {
    SocketIo io;
    io.status = status;
    io.bytes = bytes;
    return io;
}

SocketIo Failure(int code) {
    SocketIo io;
    io.status = code == WSAECONNRESET || code == WSAECONNABORTED || code == WSAESHUTDOWN
                    ? SocketStatus::Closed
                    : SocketStatus::Failed;
    io.error = ErrorText(code);
    return io;
}

SOCKET AsSocket(SocketHandle handle) {
    return static_cast<SOCKET>(handle);
}

bool ResolveNumeric(const char* address, unsigned short port, sockaddr_storage& out, int& length,
                    std::string& error) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const std::string service = std::to_string(port);
    const int rc = getaddrinfo(address, service.c_str(), &hints, &found);
    if (rc != 0 || found == nullptr) {
        error = std::string("not a numeric address: \"") + address + "\" (" + ErrorText(rc) + ")";
        return false;
    }
    std::memcpy(&out, found->ai_addr, found->ai_addrlen);
    length = static_cast<int>(found->ai_addrlen);
    freeaddrinfo(found);
    return true;
}

/// Makes a socket non-blocking and keeps child processes from inheriting it.
void Prepare(SOCKET s) {
    u_long on = 1;
    ioctlsocket(s, FIONBIO, &on);
    SetHandleInformation(reinterpret_cast<HANDLE>(s), HANDLE_FLAG_INHERIT, 0);
}

SOCKET NewSocket(const sockaddr_storage& address, std::string& error) {
    StartWinsock();
    const SOCKET s = WSASocketW(address.ss_family, SOCK_STREAM, IPPROTO_TCP, nullptr, 0,
                                WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
    if (s == INVALID_SOCKET) {
        error = ErrorText(WSAGetLastError());
        return s;
    }
    Prepare(s);
    return s;
}

void SetNoDelay(SOCKET s) {
    const BOOL on = TRUE;
    setsockopt(s, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on), sizeof on);
}

SocketHandle Listen(const char* address, unsigned short port, int backlog, std::string& error) {
    StartWinsock();
    sockaddr_storage where{};
    int length = 0;
    if (!ResolveNumeric(address, port, where, length, error))
        return kNoSocket;
    const SOCKET s = NewSocket(where, error);
    if (s == INVALID_SOCKET)
        return kNoSocket;
    // No other program may bind the same port while this one listens on it.
    const BOOL on = TRUE;
    setsockopt(s, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&on), sizeof on);
    if (bind(s, reinterpret_cast<const sockaddr*>(&where), length) != 0 ||
        listen(s, backlog) != 0) {
        error = ErrorText(WSAGetLastError());
        closesocket(s);
        return kNoSocket;
    }
    return static_cast<SocketHandle>(s);
}

SocketIo Accept(SocketHandle listener, SocketHandle& accepted) {
    const SOCKET s = accept(AsSocket(listener), nullptr, nullptr);
    if (s == INVALID_SOCKET) {
        const int code = WSAGetLastError();
        if (code == WSAEWOULDBLOCK || code == WSAECONNRESET || code == WSAEINTR)
            return Io(SocketStatus::WouldBlock);
        return Failure(code);
    }
    Prepare(s);
    SetNoDelay(s);
    accepted = static_cast<SocketHandle>(s);
    return {};
}

SocketIo Connect(const char* address, unsigned short port, SocketHandle& connecting) {
    StartWinsock();
    sockaddr_storage where{};
    int length = 0;
    SocketIo io;
    if (!ResolveNumeric(address, port, where, length, io.error)) {
        io.status = SocketStatus::Failed;
        return io;
    }
    const SOCKET s = NewSocket(where, io.error);
    if (s == INVALID_SOCKET) {
        io.status = SocketStatus::Failed;
        return io;
    }
    SetNoDelay(s);
    if (connect(s, reinterpret_cast<const sockaddr*>(&where), length) != 0) {
        const int code = WSAGetLastError();
        if (code != WSAEWOULDBLOCK && code != WSAEINPROGRESS) {
            io = Failure(code);
            io.status = SocketStatus::Failed;
            closesocket(s);
            return io;
        }
    }
    connecting = static_cast<SocketHandle>(s);
    return io;
}

SocketIo FinishConnect(SocketHandle socket) {
    int code = 0;
    int size = sizeof code;
    if (getsockopt(AsSocket(socket), SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&code), &size) !=
        0)
        code = WSAGetLastError();
    if (code == 0)
        return {};
    SocketIo io = Failure(code);
    io.status = SocketStatus::Failed;
    return io;
}

bool LocalAddress(SocketHandle socket, std::string& address, unsigned short& port) {
    sockaddr_storage where{};
    int length = sizeof where;
    if (getsockname(AsSocket(socket), reinterpret_cast<sockaddr*>(&where), &length) != 0)
        return false;
    char host[NI_MAXHOST] = {};
    char service[NI_MAXSERV] = {};
    if (getnameinfo(reinterpret_cast<const sockaddr*>(&where), length, host, sizeof host, service,
                    sizeof service, NI_NUMERICHOST | NI_NUMERICSERV) != 0)
        return false;
    address = host;
    port = static_cast<unsigned short>(std::stoi(service));
    return true;
}

int Wait(SocketHandle socket, unsigned events, int timeoutMs) {
    const SOCKET s = AsSocket(socket);
    fd_set readable, writable, failed;
    FD_ZERO(&readable);
    FD_ZERO(&writable);
    FD_ZERO(&failed);
    if ((events & kSocketReadable) != 0)
        FD_SET(s, &readable);
    if ((events & kSocketWritable) != 0)
        FD_SET(s, &writable);
    FD_SET(s, &failed);
    timeval limit{};
    limit.tv_sec = timeoutMs / 1000;
    limit.tv_usec = (timeoutMs % 1000) * 1000;
    const int rc = select(0, &readable, &writable, &failed, timeoutMs < 0 ? nullptr : &limit);
    if (rc == SOCKET_ERROR)
        return -1;
    unsigned found = 0;
    if (FD_ISSET(s, &readable))
        found |= kSocketReadable;
    if (FD_ISSET(s, &writable))
        found |= kSocketWritable;
    if (FD_ISSET(s, &failed)) // a failed connection attempt: finishConnect tells why
        found |= kSocketReadable | kSocketWritable;
    return static_cast<int>(found & events);
}

SocketIo Send(SocketHandle socket, const SendBuffer* buffers, std::size_t count) {
    WSABUF parts[kMaxSendBuffers];
    DWORD used = 0;
    for (std::size_t i = 0; i < count && used < kMaxSendBuffers; ++i)
        if (buffers[i].size != 0) {
            parts[used].buf = static_cast<char*>(const_cast<void*>(buffers[i].data));
            parts[used].len = static_cast<ULONG>(
                buffers[i].size < kMaxBufferBytes ? buffers[i].size : kMaxBufferBytes);
            ++used;
            if (buffers[i].size > kMaxBufferBytes)
                break; // the rest of this buffer goes in a later call
        }
    if (used == 0)
        return {};
    DWORD sent = 0;
    if (WSASend(AsSocket(socket), parts, used, &sent, 0, nullptr, nullptr) != 0) {
        const int code = WSAGetLastError();
        return code == WSAEWOULDBLOCK ? Io(SocketStatus::WouldBlock) : Failure(code);
    }
    return Io(SocketStatus::Done, sent);
}

SocketIo Receive(SocketHandle socket, void* data, std::size_t size) {
    const int chunk = static_cast<int>(size < kMaxBufferBytes ? size : kMaxBufferBytes);
    const int got = recv(AsSocket(socket), static_cast<char*>(data), chunk, 0);
    if (got == SOCKET_ERROR) {
        const int code = WSAGetLastError();
        return code == WSAEWOULDBLOCK ? Io(SocketStatus::WouldBlock) : Failure(code);
    }
    if (got == 0 && size != 0)
        return Io(SocketStatus::Closed);
    return Io(SocketStatus::Done, static_cast<std::size_t>(got));
}

void ShutdownSend(SocketHandle socket) {
    shutdown(AsSocket(socket), SD_SEND);
}

void CloseSocket(SocketHandle socket) {
    if (socket != kNoSocket)
        closesocket(AsSocket(socket));
}

} // namespace

SocketServices& Sockets() {
    static SocketServices table{
        .listen = Listen,
        .accept = Accept,
        .connect = Connect,
        .finishConnect = FinishConnect,
        .localAddress = LocalAddress,
        .wait = Wait,
        .send = Send,
        .receive = Receive,
        .shutdownSend = ShutdownSend,
        .close = CloseSocket,
    };
    return table;
}

} // namespace fileio::platform
