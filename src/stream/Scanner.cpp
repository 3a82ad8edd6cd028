// Scanner.cpp - the text scanner: white space, lines, tokens and the peeks, written once over
// the transport's window.
//
// Each scan works inside the window and asks the transport for more only at the window's
// edge. A run of bytes that the caller receives as a view (a token, a line) stays a view into
// the window when it lies there; when the window must move under it, the bytes taken so far
// are first copied into a spill buffer, so that the view never outlives its bytes.

#include "fileio/stream/VarnStream.h"

#include "stream/StreamBytes.h"
#include "stream/StreamState.h"

#include <cstring>
#include <string>

using namespace fileio::detail;

namespace {

/// A run of bytes being taken from a stream's window, starting at the offset `start` of the
/// window. Before the window moves, Keep copies what it holds of the run into the spill
/// buffer; RestartAt then tells where the run goes on in the new window.
class Run {
public:
    Run(std::string& spill, unsigned long long start) : m_spill(spill), m_start(start) {
        m_spill.clear();
    }
    /// Keeps the run's bytes of the window, up to the offset `end`.
    void Keep(const unsigned char* data, unsigned long long end) {
        m_spill.append(reinterpret_cast<const char*>(data + m_start),
                       static_cast<std::size_t>(end - m_start));
        m_spilled = true;
    }
    void RestartAt(unsigned long long next) { m_start = next; }
    /// The whole run, which ends at `end` of the current window.
    std::string_view Finish(const unsigned char* data, unsigned long long end) {
        if (!m_spilled)
            return {reinterpret_cast<const char*>(data + m_start),
                    static_cast<std::size_t>(end - m_start)};
        Keep(data, end);
        return m_spill;
    }

private:
    std::string& m_spill;
    unsigned long long m_start;
    bool m_spilled = false;
};

} // namespace

// ---- white space and lines ----------------------------------------------------------------------

void VarnStream::SkipWhite() {
    // At most 255 bytes are read; the one that stopped the scan is read again, so that after
    // 255 white bytes the stream stands before the last of them.
    for (std::size_t read = 0; read < kTokenBufferSize - 1; ++read) {
        const int c = PeekByte();
        if (c < 0 || !IsTokenSpace(c))
            return;
        ++m_window.position;
    }
}

void VarnStream::ReadPastEOL() {
    std::size_t read = 0;
    int c;
    do {
        c = NextByte();
        if (c < 0)
            break;
        ++read;
    } while (!IsLineEnd(c) && read < kTokenBufferSize);
    unsigned long long noted = Position();
    while (read < kTokenBufferSize) {
        noted = Position();
        c = NextByte();
        if (c < 0)
            break;
        ++read;
        if (!IsLineEnd(c))
            break;
    }
    MoveTo(noted);
}

bool VarnStream::NextLine(std::string& spill, std::string_view& line) {
    constexpr std::size_t kWordSize = 4;
    if (IsBinary()) {
        if (Available() >= kWordSize) {
            line = {reinterpret_cast<const char*>(m_window.data + m_window.position), kWordSize};
            m_window.position += kWordSize;
            return true;
        }
        spill.resize(kWordSize);
        spill.resize(static_cast<std::size_t>(ReadC(spill.data(), kWordSize)));
        line = spill;
        return !spill.empty();
    }
    Run run(spill, m_window.position);
    // The next byte, keeping the run when the window must move; -1 at the end.
    auto next = [&]() -> int {
        if (Available() == 0) {
            run.Keep(m_window.data, m_window.position);
            const bool refilled = RefillWindow();
            run.RestartAt(m_window.position);
            if (!refilled)
                return -1;
        }
        return m_window.data[m_window.position];
    };
    bool any = false;
    for (int c; (c = next()) >= 0;) {
        ++m_window.position;
        any = true;
        if (c == '\n')
            break;
        if (c == '\r') {
            if (next() == '\n')
                ++m_window.position;
            break;
        }
    }
    line = run.Finish(m_window.data, m_window.position);
    return any;
}

bool VarnStream::ReadLine(String& line) {
    std::string spill;
    std::string_view bytes;
    const bool found = NextLine(spill, bytes);
    line = String(bytes.data(), static_cast<int>(bytes.size()));
    return found;
}

// ---- tokens -------------------------------------------------------------------------------------

std::string_view VarnStream::ScanToken(std::string& spill) {
    while (true) {
        const int c = PeekByte();
        if (c < 0 || !IsTokenSpace(c))
            break;
        ++m_window.position;
    }
    Run run(spill, m_window.position);
    bool more = Available() != 0;
    while (more) {
        const unsigned char* p = m_window.data + m_window.position;
        const unsigned char* const end = m_window.data + m_window.length;
        while (p != end && !IsTokenSpace(*p))
            ++p;
        m_window.position = static_cast<unsigned long long>(p - m_window.data);
        if (p != end)
            break;
        run.Keep(m_window.data, m_window.position);
        more = RefillWindow();
        run.RestartAt(m_window.position);
    }
    std::string_view token = run.Finish(m_window.data, m_window.position);
    // Skipping what follows may move the window: a token still in it is kept first.
    bool tokenInWindow = token.data() != spill.data();
    auto peek = [&]() -> int {
        if (Available() == 0) {
            if (tokenInWindow) {
                spill.assign(token);
                token = spill;
                tokenInWindow = false;
            }
            if (!RefillWindow())
                return -1;
        }
        return m_window.data[m_window.position];
    };
    while (IsBlank(peek()))
        ++m_window.position;
    bool passed = false;
    while (IsLineEnd(peek())) {
        ++m_window.position;
        passed = true;
    }
    m_passedEOL = passed;
    return token;
}

void VarnStream::ParseToken(String& out) {
    std::string spill;
    const std::string_view token = ScanToken(spill);
    out = token.empty() ? String() : String(token.data(), static_cast<int>(token.size()));
    SetStatusMeter();
}

std::string_view VarnStream::ScalarToken() {
    std::string spill;
    std::string_view token = ScanToken(spill);
    if (!token.empty() && token.data() == spill.data()) {
        String& shared = FileToken();
        shared = String(token.data(), static_cast<int>(token.size()));
        token = shared.View();
    }
    SetStatusMeter();
    return token;
}

void VarnStream::ParseToken(char* out, char delimiter) {
    std::size_t kept = 0;
    while (Available() != 0 || RefillWindow()) {
        const unsigned char* p = m_window.data + m_window.position;
        const auto available = static_cast<std::size_t>(Available());
        const auto* found = static_cast<const unsigned char*>(std::memchr(p, delimiter, available));
        const std::size_t length =
            found != nullptr ? static_cast<std::size_t>(found - p) : available;
        const std::size_t room = kTokenBufferSize - 1 - kept;
        const std::size_t copied = length < room ? length : room;
        std::memcpy(out + kept, p, copied);
        kept += copied;
        m_window.position += length;
        if (found != nullptr) {
            ++m_window.position;
            break;
        }
    }
    out[kept] = '\0';
}

void VarnStream::ParseToken(String& out, char delimiter) {
    char buffer[kTokenBufferSize] = {};
    ParseToken(buffer, delimiter);
    out = String(buffer);
}

String VarnStream::ReadString(char delimiter) {
    std::string text;
    for (int c; (c = NextByte()) >= 0 && c != static_cast<unsigned char>(delimiter);)
        text += static_cast<char>(c);
    return String(text.c_str());
}

void VarnStream::ParseString(String& out) {
    if (IsAscii()) {
        ParseToken(out);
        return;
    }
    const int count = NextByte();
    if (count < 0) {
        out = String();
        OnFailed();
        return;
    }
    ReadCountedText(out, static_cast<std::size_t>(count));
}

// ---- peeks --------------------------------------------------------------------------------------

bool VarnStream::PeekWord(unsigned int& word) {
    char scratch[sizeof word];
    const std::string_view bytes = Peek(scratch, sizeof word);
    word = 0;
    std::memcpy(&word, bytes.data(), bytes.size());
    return bytes.size() == sizeof word;
}

bool VarnStream::IsTextHeaderNext(bool anyVersion) {
    SkipWhite();
    const int c = PeekByte();
    return c >= 0 && IsHeaderBracket(c, m_generation, anyVersion);
}

bool VarnStream::IsHeader() {
    if (IsAscii())
        return IsTextHeaderNext(false);
    unsigned int word;
    return PeekWord(word) && (word & kHeaderTokenBit) != 0;
}

bool VarnStream::IsHeaderFromAnyVersion() {
    if (IsAscii())
        return IsTextHeaderNext(true);
    return VarnStream::IsHeader();
}

bool VarnStream::IsLabel() {
    if (IsBinary()) {
        unsigned int word;
        return PeekWord(word) && (word & kLabelTokenBit) != 0;
    }
    SkipWhite();
    const unsigned long long at = Position();
    int c;
    while ((c = NextByte()) >= 0 && c != '=' && !IsLineEnd(c)) {
    }
    MoveTo(at);
    return c == '=';
}
