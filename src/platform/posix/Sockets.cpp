// Sockets.cpp - non-blocking TCP sockets, POSIX implementation (BSD sockets).
//
// Every socket is made non-blocking and close-on-exec. Sends pass MSG_NOSIGNAL, so a peer
// that has gone away gives EPIPE rather than a SIGPIPE that would end the host.

#include "platform/Platform.h"

#include <arpa/inet.h>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <system_error>
#include <unistd.h>

namespace fileio::platform {

namespace {

/// The most buffers one send passes to the system.
constexpr std::size_t kMaxSendBuffers = 16;

std::string ErrorText(int error) {
    return std::generic_category().message(error);
}

/// An outcome without a failure text.
SocketIo Io(SocketStatus status, std::size_t bytes = 0) {
    SocketIo io;
    io.status = status;
    io.bytes = bytes;
    return io;
}

SocketIo Failure(int error) {
    SocketIo io;
    io.status = error == EPIPE || error == ECONNRESET || error == ECONNABORTED
                    ? SocketStatus::Closed
                    : SocketStatus::Failed;
    io.error = ErrorText(error);
    return io;
}

bool WouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINPROGRESS;
}

/// The numeric address as a socket address; false (with `error`) when it is not one.
bool ResolveNumeric(const char* address, unsigned short port, sockaddr_storage& out,
                    socklen_t& length, std::string& error) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const std::string service = std::to_string(port);
    const int rc = ::getaddrinfo(address, service.c_str(), &hints, &found);
    if (rc != 0 || found == nullptr) {
        error =
            std::string("not a numeric address: \"") + address + "\" (" + ::gai_strerror(rc) + ")";
        return false;
    }
    std::memcpy(&out, found->ai_addr, found->ai_addrlen);
    length = found->ai_addrlen;
    ::freeaddrinfo(found);
    return true;
}

/// A new non-blocking, close-on-exec TCP socket of the address's family.
int NewSocket(const sockaddr_storage& address, std::string& error) {
    const int fd = ::socket(address.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0)
        error = ErrorText(errno);
    return fd;
}

void SetNoDelay(int fd) {
    const int on = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

SocketHandle Listen(const char* address, unsigned short port, int backlog, std::string& error) {
    sockaddr_storage where{};
    socklen_t length = 0;
    if (!ResolveNumeric(address, port, where, length, error))
        return kNoSocket;
    const int fd = NewSocket(where, error);
    if (fd < 0)
        return kNoSocket;
    // A server restarted on its port must not wait for the old connections' TIME_WAIT.
    const int on = 1;
    ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (::bind(fd, reinterpret_cast<const sockaddr*>(&where), length) != 0 ||
        ::listen(fd, backlog) != 0) {
        error = ErrorText(errno);
        ::close(fd);
        return kNoSocket;
    }
    return fd;
}

SocketIo Accept(SocketHandle listener, SocketHandle& accepted) {
    const int fd =
        ::accept4(static_cast<int>(listener), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) {
        const int error = errno;
        // A connection that went away before it was taken is no failure of the listener.
        if (WouldBlock(error) || error == ECONNABORTED || error == EINTR)
            return Io(SocketStatus::WouldBlock);
        return Failure(error);
    }
    SetNoDelay(fd);
    accepted = fd;
    return {};
}

SocketIo Connect(const char* address, unsigned short port, SocketHandle& connecting) {
    sockaddr_storage where{};
    socklen_t length = 0;
    SocketIo io;
    if (!ResolveNumeric(address, port, where, length, io.error)) {
        io.status = SocketStatus::Failed;
        return io;
    }
    const int fd = NewSocket(where, io.error);
    if (fd < 0) {
        io.status = SocketStatus::Failed;
        return io;
    }
    SetNoDelay(fd);
    if (::connect(fd, reinterpret_cast<const sockaddr*>(&where), length) != 0 &&
        !WouldBlock(errno) && errno != EINTR) {
        io = Failure(errno);
        io.status = SocketStatus::Failed;
        ::close(fd);
        return io;
    }
    connecting = fd;
    return io;
}

SocketIo FinishConnect(SocketHandle socket) {
    int error = 0;
    socklen_t size = sizeof error;
    if (::getsockopt(static_cast<int>(socket), SOL_SOCKET, SO_ERROR, &error, &size) != 0)
        error = errno;
    if (error == 0)
        return {};
    SocketIo io = Failure(error);
    io.status = SocketStatus::Failed;
    return io;
}

bool LocalAddress(SocketHandle socket, std::string& address, unsigned short& port) {
    sockaddr_storage where{};
    socklen_t length = sizeof where;
    if (::getsockname(static_cast<int>(socket), reinterpret_cast<sockaddr*>(&where), &length) != 0)
        return false;
    char text[INET6_ADDRSTRLEN] = {};
    if (where.ss_family == AF_INET) {
        const auto* v4 = reinterpret_cast<const sockaddr_in*>(&where);
        ::inet_ntop(AF_INET, &v4->sin_addr, text, sizeof text);
        port = ntohs(v4->sin_port);
    } else if (where.ss_family == AF_INET6) {
        const auto* v6 = reinterpret_cast<const sockaddr_in6*>(&where);
        ::inet_ntop(AF_INET6, &v6->sin6_addr, text, sizeof text);
        port = ntohs(v6->sin6_port);
    } else {
        return false;
    }
    address = text;
    return true;
}

int Wait(SocketHandle socket, unsigned events, int timeoutMs) {
    pollfd entry{};
    entry.fd = static_cast<int>(socket);
    entry.events = static_cast<short>(((events & kSocketReadable) != 0 ? POLLIN : 0) |
                                      ((events & kSocketWritable) != 0 ? POLLOUT : 0));
    int rc;
    do {
        rc = ::poll(&entry, 1, timeoutMs < 0 ? -1 : timeoutMs);
    } while (rc < 0 && errno == EINTR && timeoutMs != 0);
    if (rc < 0)
        return errno == EINTR ? 0 : -1;
    unsigned found = 0;
    if ((entry.revents & (POLLIN | POLLHUP | POLLERR)) != 0)
        found |= kSocketReadable;
    if ((entry.revents & (POLLOUT | POLLHUP | POLLERR)) != 0)
        found |= kSocketWritable;
    if ((entry.revents & POLLNVAL) != 0)
        return -1;
    return static_cast<int>(found & events);
}

SocketIo Send(SocketHandle socket, const SendBuffer* buffers, std::size_t count) {
    iovec parts[kMaxSendBuffers];
    std::size_t used = 0;
    for (std::size_t i = 0; i < count && used < kMaxSendBuffers; ++i)
        if (buffers[i].size != 0)
            parts[used++] = {const_cast<void*>(buffers[i].data), buffers[i].size};
    if (used == 0)
        return {};
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = used;
    ssize_t sent;
    do {
        sent = ::sendmsg(static_cast<int>(socket), &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    if (sent < 0)
        return WouldBlock(errno) ? Io(SocketStatus::WouldBlock) : Failure(errno);
    return Io(SocketStatus::Done, static_cast<std::size_t>(sent));
}

SocketIo Receive(SocketHandle socket, void* data, std::size_t size) {
    ssize_t got;
    do {
        got = ::recv(static_cast<int>(socket), data, size, 0);
    } while (got < 0 && errno == EINTR);
    if (got < 0)
        return WouldBlock(errno) ? Io(SocketStatus::WouldBlock) : Failure(errno);
    if (got == 0 && size != 0)
        return Io(SocketStatus::Closed);
    return Io(SocketStatus::Done, static_cast<std::size_t>(got));
}

void ShutdownSend(SocketHandle socket) {
    ::shutdown(static_cast<int>(socket), SHUT_WR);
}

void CloseSocket(SocketHandle socket) {
    if (socket != kNoSocket)
        ::close(static_cast<int>(socket));
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
