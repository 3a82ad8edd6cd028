// VarnSocketTest.cpp - the message socket over loopback, with well-behaved and broken peers.

#include "fileio/net/VarnSocket.h"
#include "fileio/memory/NamedPools.h"
#include "fileio/stream/MemoryStream.h"
#include "net/NetTestSupport.h"
#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <iterator>
#include <string>
#include <thread>
#include <tuple>

namespace {

using namespace fileio::test;
using fileio::test::Header; // not the stream token class

TEST(VarnSocketTest, CarriesMessagesUpToThePeersLimitByteForByte) {
    constexpr unsigned long long kLimit = 1 << 20;
    const std::tuple<const char*, unsigned long long, bool> cases[] = {
        {"empty", 0, false},
        {"one binary byte", 1, true},
        {"the limit", kLimit, true},
    };
    SocketPair pair;
    ASSERT_TRUE(pair.Open(kLimit));
    MemoryStream received;
    for (const auto& [what, size, binary] : cases) {
        SCOPED_TRACE(what);
        const std::string bytes = Pattern(size);
        const MemoryStream message = StreamOf(bytes, binary);
        SocketResult sent = SR_SYSTEM_ERROR;
        std::thread sender([&] { sent = pair.client.Send(message, kPatientMs); });
        const SocketResult result = pair.server.Receive(received, kPatientMs);
        sender.join();
        ASSERT_EQ(result, SR_OK) << pair.server.GetErrorText().Get();
        EXPECT_EQ(sent, SR_OK);
        EXPECT_EQ(BytesOf(received), bytes);
        EXPECT_EQ(received.GetMode(), binary ? FM_LOADING | FM_BINARY : FM_LOADING);
        EXPECT_EQ(received.GetPos(), 0u);
    }
    // One byte more is refused before anything goes out: the connection stays, and the
    // refused message takes no number and leaves no trace before the next one.
    EXPECT_EQ(pair.client.Send(StreamOf(Pattern(kLimit + 1)), kPatientMs), SR_TOO_LARGE);
    unsigned int number = 0;
    ASSERT_EQ(pair.client.Send(StreamOf("after"), kPatientMs, &number), SR_OK);
    EXPECT_EQ(number, std::size(cases) + 1);
    ASSERT_EQ(pair.server.Receive(received, kPatientMs), SR_OK);
    EXPECT_EQ(BytesOf(received), "after");
}

TEST(VarnSocketTest, RepliesCarryTheNumberOfTheirRequest) {
    SocketPair pair;
    ASSERT_TRUE(pair.Open());
    ASSERT_EQ(pair.client.Send(StreamOf("one"), kPatientMs), SR_OK);
    ASSERT_EQ(pair.client.Send(StreamOf("two"), kPatientMs), SR_OK);
    MemoryStream message;
    ASSERT_EQ(pair.server.Receive(message, kPatientMs), SR_OK);
    EXPECT_EQ(pair.server.GetRequestNumber(), 1u);
    ASSERT_EQ(pair.server.Receive(message, kPatientMs), SR_OK);
    EXPECT_EQ(pair.server.GetRequestNumber(), 2u);
    ASSERT_EQ(pair.server.Reply(1, StreamOf("answer", true), kPatientMs), SR_OK);
    ASSERT_EQ(pair.client.Receive(message, kPatientMs), SR_OK);
    EXPECT_TRUE(pair.client.IsReply());
    EXPECT_EQ(pair.client.GetRequestNumber(), 1u);
    EXPECT_EQ(BytesOf(message), "answer");
}

// A byte every few milliseconds: each read finds data quickly, but one deadline covers the
// whole message; the next receive completes the message the deadline left.
TEST(VarnSocketTest, APeerSendingOneByteAtATimeIsReadWholeWithinOneDeadline) {
    RawPair raw;
    const std::string payload = Pattern(300);
    const std::string bytes = Header(2, payload.size(), 5, 0x02) + payload;
    ASSERT_EQ(raw.Open(Hello()), SR_OK);
    std::thread trickle([&] {
        for (const char byte : bytes) {
            raw.peer.Send(std::string(1, byte));
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
        }
    });
    MemoryStream received;
    const SocketResult first = raw.socket.Receive(received, 100);
    const auto lengthAfterTheDeadline = received.GetLength();
    const SocketResult second = raw.socket.Receive(received, kPatientMs);
    trickle.join();
    EXPECT_EQ(first, SR_TIMED_OUT);
    EXPECT_EQ(lengthAfterTheDeadline, 0u);
    ASSERT_EQ(second, SR_OK);
    EXPECT_EQ(BytesOf(received), payload);
    EXPECT_EQ(raw.socket.GetRequestNumber(), 5u);
    EXPECT_TRUE(received.IsBinary());
}

TEST(VarnSocketTest, NamesWhatABrokenPeerDid) {
    // What the peer does, the bytes it sends after the hello before it closes, the result,
    // and a part of the error text.
    const std::tuple<const char*, std::string, SocketResult, const char*> cases[] = {
        {"closes between messages", "", SR_PEER_CLOSED, "closed"},
        {"closes mid-header", Header(2, 10).substr(0, 11), SR_TRUNCATED, "inside a message"},
        {"closes mid-payload", Header(2, 10) + "12345", SR_TRUNCATED, "inside a message"},
        {"sends another version", Header(2, 1, 0, 0, 7) + "x", SR_BAD_VERSION, "version 7"},
        {"sends garbage", "GET / HTTP/1.1\r\nHost: x\r\n\r\n", SR_BAD_HEADER, "header"},
        {"says hello twice", Hello(), SR_BAD_HEADER, "second hello"},
        {"claims 4 GiB", Header(2, 1ULL << 32), SR_TOO_LARGE, "4294967296 bytes"},
        {"one byte too many", Header(2, (1 << 20) + 1), SR_TOO_LARGE, "limit of 1048576"},
    };
    for (const auto& [what, bytes, expected, says] : cases) {
        SCOPED_TRACE(what);
        RawPair raw;
        raw.listener.SetMessageLimit(1 << 20);
        ASSERT_EQ(raw.Open(Hello()), SR_OK);
        ASSERT_TRUE(raw.peer.Send(bytes));
        raw.peer.Close();
        MemoryStream received;
        received.Open(FM_BINARY);
        received << 7;
        const auto ramBefore = TotalRAM();
        EXPECT_EQ(raw.socket.Receive(received, kPatientMs), expected);
        EXPECT_LT(TotalRAM(), ramBefore + 64 * 1024); // no lying length is believed
        EXPECT_FALSE(raw.socket.IsConnected());
        EXPECT_NE(raw.socket.GetErrorText().Find(says), -1) << raw.socket.GetErrorText().Get();
        EXPECT_EQ(received.GetLength(), 4u); // the stream is left as it was
    }
}

TEST(VarnSocketTest, RefusesAPeerOfAnotherVersionAtTheHandshake) {
    RawPair raw;
    EXPECT_EQ(raw.Open(Hello(1 << 20, 2)), SR_BAD_VERSION);
    EXPECT_NE(raw.listener.GetErrorText().Find("version 2"), -1)
        << raw.listener.GetErrorText().Get();
    EXPECT_FALSE(raw.socket.IsConnected());
    EXPECT_TRUE(raw.listener.IsListening()); // the listener goes on
}

TEST(VarnSocketTest, APeerWhoseHelloIsLateIsStillAccepted) {
    RawPair raw;
    ASSERT_EQ(raw.Open("", 100), SR_OK); // no hello within Accept's deadline
    EXPECT_TRUE(raw.socket.IsConnected());
    EXPECT_EQ(raw.socket.GetPeerMessageLimit(), 0u);
    MemoryStream received;
    EXPECT_EQ(raw.socket.Send(StreamOf("early"), 50), SR_TIMED_OUT); // waits for the hello
    ASSERT_TRUE(raw.peer.Send(Hello(4096) + Header(2, 4, 3) + "late"));
    ASSERT_EQ(raw.socket.Receive(received, kPatientMs), SR_OK);
    EXPECT_EQ(BytesOf(received), "late");
    EXPECT_EQ(raw.socket.GetPeerMessageLimit(), 4096u);
    EXPECT_EQ(raw.socket.Send(StreamOf(Pattern(4097)), kPatientMs), SR_TOO_LARGE);
}

TEST(VarnSocketTest, AHostLoopPollsWithoutWaiting) {
    RawPair raw;
    ASSERT_EQ(raw.Open(Hello()), SR_OK);
    ASSERT_TRUE(raw.peer.Send(Header(2, 6, 9) + "abc"));
    MemoryStream received;
    EXPECT_EQ(raw.socket.Poll(received), SR_TIMED_OUT); // half a message
    ASSERT_TRUE(raw.peer.Send("def"));
    // The host's own loop: wait on the handle, then poll.
    const auto handle = static_cast<fileio::platform::SocketHandle>(raw.socket.GetHandle());
    SocketResult result = SR_TIMED_OUT;
    for (int round = 0; round < 100 && result == SR_TIMED_OUT; ++round)
        if (fileio::platform::Sockets().wait(handle, fileio::platform::kSocketReadable, 100) > 0)
            result = raw.socket.Poll(received);
    ASSERT_EQ(result, SR_OK);
    EXPECT_EQ(BytesOf(received), "abcdef");
    EXPECT_EQ(raw.socket.GetRequestNumber(), 9u);
}

TEST(VarnSocketTest, WritingAfterThePeerClosedIsAnErrorNotASignal) {
    SocketPair pair;
    ASSERT_TRUE(pair.Open());
    pair.server.Close();
    const MemoryStream message = StreamOf(Pattern(64 * 1024));
    SocketResult result = SR_OK;
    // The first sends may still fit in the system's buffers; the reset comes soon after.
    for (int i = 0; i < 1000 && result == SR_OK; ++i)
        result = pair.client.Send(message, kPatientMs);
    EXPECT_EQ(result, SR_PEER_CLOSED) << pair.client.GetErrorText().Get();
    EXPECT_EQ(pair.client.Send(message, kPatientMs), SR_NOT_CONNECTED);
}

TEST(VarnSocketTest, ALastReplyIsNotLostWhenTheSenderClosesAtOnce) {
    SocketPair pair;
    ASSERT_TRUE(pair.Open());
    // The client's request is still unread at the server when it replies and closes.
    ASSERT_EQ(pair.client.Send(StreamOf(Pattern(100000)), kPatientMs), SR_OK);
    ASSERT_EQ(pair.server.Reply(1, StreamOf("last words"), kPatientMs), SR_OK);
    pair.server.Close(500);
    MemoryStream reply;
    ASSERT_EQ(pair.client.Receive(reply, kPatientMs), SR_OK) << pair.client.GetErrorText().Get();
    EXPECT_EQ(BytesOf(reply), "last words");
    EXPECT_EQ(pair.client.Receive(reply, kPatientMs), SR_PEER_CLOSED);
}

TEST(VarnSocketTest, ListensOnTheLoopbackAddressUnlessTold) {
    CVarnSocket socket;
    ASSERT_EQ(socket.Listen(), SR_OK);
    EXPECT_STREQ(socket.GetAddress().Get(), "127.0.0.1");
    CVarnSocket other;
    ASSERT_EQ(other.Listen(0, "127.0.0.2"), SR_OK) << other.GetErrorText().Get();
    EXPECT_STREQ(other.GetAddress().Get(), "127.0.0.2");
    CVarnSocket wrongAddress;
    EXPECT_NE(wrongAddress.Connect("127.0.0.1", other.GetPort(), 2000), SR_OK);

    CVarnSocket named;
    EXPECT_EQ(named.Listen(0, "localhost"), SR_SYSTEM_ERROR); // names are not looked up
    EXPECT_NE(named.GetErrorText().Find("localhost"), -1);
    EXPECT_EQ(named.Listen(socket.GetPort()), SR_SYSTEM_ERROR); // the port is taken
}

TEST(VarnSocketTest, AFailedConnectIsQuickAndLeavesNoConnection) {
    const unsigned short port = ClosedPort();
    CVarnSocket socket, other;
    const auto start = std::chrono::steady_clock::now();
    const SocketResult result = socket.Connect(kUnusedLoopback, port, 3000);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(3000 + 2000));
    EXPECT_TRUE(result == SR_SYSTEM_ERROR || result == SR_TIMED_OUT) << GetSocketResultText(result);
    EXPECT_FALSE(socket.GetErrorText().IsEmpty());
    EXPECT_EQ(socket.GetHandle(), -1);
    EXPECT_EQ(socket.Send(StreamOf("x"), 0), SR_NOT_CONNECTED);
    EXPECT_EQ(socket.Accept(other, 0), SR_NOT_CONNECTED);
    EXPECT_EQ(socket.Close(), SR_OK);
    ASSERT_EQ(socket.Listen(), SR_OK);
    EXPECT_EQ(socket.Accept(other, 0), SR_TIMED_OUT); // nobody is connecting
    MemoryStream message;
    EXPECT_EQ(socket.Receive(message, 0), SR_NOT_CONNECTED); // a listener carries nothing
}

} // namespace
