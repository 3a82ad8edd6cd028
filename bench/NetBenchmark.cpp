// NetBenchmark.cpp - round trips of the message socket over loopback against the same
// framing written by hand on the platform's plain sockets, in the same run.
//
// Each round trip sends one message (1 KiB or 1 MiB) to an echo thread and receives it
// back. The message socket carries a MemoryStream each way, with its deadlines and its
// decoder's checks. The hand-made baseline sends the same 20-byte header and payload from
// a stream and receives them into a reused buffer, which it then copies into a reused
// stream (Assign, the cheapest way into a MemoryStream), with no deadline and no checks.
// The raw variant of the baseline stops at the buffer: it shows what the stream at the end
// costs.
//
// Counters: items per second (round trips, i.e. messages each way) and bytes per second
// (payload bytes both ways). The goal: the message socket within 1.2x of the baseline's
// time per round trip at both sizes.

#include "fileio/net/VarnSocket.h"
#include "fileio/stream/MemoryStream.h"
#include "net/MessageFrame.h"
#include "platform/Platform.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace fileio::platform;

constexpr int kTimeoutMs = 60000;

MemoryStream Message(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 13);
    MemoryStream stream;
    stream.Open(FM_BINARY);
    stream.Write(bytes.data(), bytes.size());
    return stream;
}

void BM_VarnSocketRoundTrip(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    CVarnSocket listener;
    listener.Listen();
    CVarnSocket server;
    auto accepted =
        std::async(std::launch::async, [&] { return listener.Accept(server, kTimeoutMs); });
    CVarnSocket client;
    if (client.Connect("127.0.0.1", listener.GetPort(), kTimeoutMs) != SR_OK ||
        accepted.get() != SR_OK) {
        state.SkipWithError("no connection");
        return;
    }
    std::thread echo([&] {
        MemoryStream message;
        while (server.Receive(message, kTimeoutMs) == SR_OK &&
               server.Reply(server.GetRequestNumber(), message, kTimeoutMs) == SR_OK) {
        }
    });
    const MemoryStream message = Message(size);
    MemoryStream reply;
    for (auto _ : state) {
        if (client.Send(message, kTimeoutMs) != SR_OK ||
            client.Receive(reply, kTimeoutMs) != SR_OK) {
            state.SkipWithError("round trip failed");
            break;
        }
    }
    client.Close(kTimeoutMs);
    echo.join();
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * size));
}

// ---- the baseline: the same frames by hand ------------------------------------------------

bool SendAll(SocketHandle socket, const SendBuffer (&parts)[2]) {
    std::size_t sent = 0;
    const std::size_t total = parts[0].size + parts[1].size;
    while (sent < total) {
        SendBuffer rest[2];
        std::size_t count = 0;
        if (sent < parts[0].size)
            rest[count++] = {static_cast<const char*>(parts[0].data) + sent, parts[0].size - sent};
        const std::size_t second = sent < parts[0].size ? 0 : sent - parts[0].size;
        rest[count++] = {static_cast<const char*>(parts[1].data) + second, parts[1].size - second};
        const SocketIo io = Sockets().send(socket, rest, count);
        if (io.status == SocketStatus::Done)
            sent += io.bytes;
        else if (io.status != SocketStatus::WouldBlock ||
                 Sockets().wait(socket, kSocketWritable, -1) <= 0)
            return false;
    }
    return true;
}

bool ReceiveAll(SocketHandle socket, void* data, std::size_t size) {
    std::size_t got = 0;
    while (got < size) {
        const SocketIo io = Sockets().receive(socket, static_cast<char*>(data) + got, size - got);
        if (io.status == SocketStatus::Done)
            got += io.bytes;
        else if (io.status != SocketStatus::WouldBlock ||
                 Sockets().wait(socket, kSocketReadable, -1) <= 0)
            return false;
    }
    return true;
}

/// Receives one frame: its header into `header`, its payload into `payload` and, unless
/// `stream` is null, from there into `stream`.
bool ReceiveFrame(SocketHandle socket, unsigned char (&header)[fileio::net::kHeaderSize],
                  std::vector<unsigned char>& payload, MemoryStream* stream) {
    if (!ReceiveAll(socket, header, sizeof header))
        return false;
    std::uint64_t length = 0;
    std::memcpy(&length, header + 12, sizeof length); // little-endian hosts only
    payload.resize(length);
    if (!ReceiveAll(socket, payload.data(), payload.size()))
        return false;
    if (stream != nullptr)
        stream->Assign(payload.data(), payload.size());
    return true;
}

void HandFramedRoundTrip(benchmark::State& state, bool intoStream) {
    const auto size = static_cast<std::size_t>(state.range(0));
    std::string why;
    const SocketHandle listener = Sockets().listen("127.0.0.1", 0, 1, why);
    std::string address;
    unsigned short port = 0;
    Sockets().localAddress(listener, address, port);
    SocketHandle client = kNoSocket, server = kNoSocket;
    Sockets().connect("127.0.0.1", port, client);
    Sockets().wait(listener, kSocketReadable, kTimeoutMs);
    Sockets().accept(listener, server);
    Sockets().wait(client, kSocketWritable, kTimeoutMs);
    if (server == kNoSocket || Sockets().finishConnect(client).status != SocketStatus::Done) {
        state.SkipWithError("no connection");
        return;
    }
    std::thread echo([server, intoStream] {
        unsigned char header[fileio::net::kHeaderSize];
        std::vector<unsigned char> payload;
        MemoryStream stream;
        while (ReceiveFrame(server, header, payload, intoStream ? &stream : nullptr)) {
            const SendBuffer back = intoStream ? SendBuffer{stream.GetData(), stream.GetLength()}
                                               : SendBuffer{payload.data(), payload.size()};
            if (!SendAll(server, {{header, sizeof header}, back}))
                break;
        }
    });
    const MemoryStream message = Message(size);
    unsigned char header[fileio::net::kHeaderSize];
    fileio::net::EncodeHeader({.kind = fileio::net::FrameKind::Message,
                               .mode = FM_BINARY,
                               .request = 1,
                               .length = message.GetLength()},
                              header);
    unsigned char replyHeader[fileio::net::kHeaderSize];
    std::vector<unsigned char> reply;
    MemoryStream replyStream;
    for (auto _ : state) {
        if (!SendAll(client, {{header, sizeof header}, {message.GetData(), message.GetLength()}}) ||
            !ReceiveFrame(client, replyHeader, reply, intoStream ? &replyStream : nullptr)) {
            state.SkipWithError("round trip failed");
            break;
        }
    }
    Sockets().shutdownSend(client);
    echo.join();
    Sockets().close(client);
    Sockets().close(server);
    Sockets().close(listener);
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(2 * size));
}

void BM_HandFramedRoundTrip(benchmark::State& state) {
    HandFramedRoundTrip(state, true);
}

void BM_HandFramedRawRoundTrip(benchmark::State& state) {
    HandFramedRoundTrip(state, false);
}

} // namespace

BENCHMARK(BM_VarnSocketRoundTrip)->Arg(1024)->Arg(1 << 20)->UseRealTime();
BENCHMARK(BM_HandFramedRoundTrip)->Arg(1024)->Arg(1 << 20)->UseRealTime();
BENCHMARK(BM_HandFramedRawRoundTrip)->Arg(1024)->Arg(1 << 20)->UseRealTime();

BENCHMARK_MAIN();
