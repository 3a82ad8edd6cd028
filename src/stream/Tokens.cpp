// Tokens.cpp - headers, end headers and labels: writing, reading, peeking and skipping.

#include "fileio/stream/MemoryStream.h"
#include "fileio/stream/VarnStream.h"

#include "core/StringAscii.h"
#include "stream/StreamBytes.h"
#include "stream/TokenText.h"

#include <cstring>

using namespace fileio::detail;

namespace {

/// The id of a word that names a section: a header word, else a label word (label words
/// may open sections), else -1.
int LookUpSectionWord(const char* word) {
    const int id = GetHeaderIDFromText(word);
    return id != -1 ? id : GetLabelIDFromText(word);
}

/// The start of the text the header table gives for an id without a word.
constexpr char kHeaderNotFound[] = "HeaderNotFound: ";

/// The id that reading `word` as a header gives (see ReadHeaderBinary).
int HeaderIdOfWord(unsigned int word) {
    if (word == kNoIdWord || (word & kLabelTokenBit) != 0)
        return -1;
    return static_cast<int>(word & ~kHeaderTokenBit);
}

} // namespace

// ---- writing ------------------------------------------------------------------------------------

VarnStream& VarnStream::operator<<(const Header& header) {
    if (IsBinary()) {
        WriteBinary(static_cast<unsigned int>(header.id) | kHeaderTokenBit);
    } else {
        PutBytes("<", 1);
        PutBytes(header.text, std::strlen(header.text));
        PutBytes(">", 1);
    }
    return *this;
}

VarnStream& VarnStream::operator<<(const EndHeader& header) {
    if (IsBinary()) {
        WriteBinary(static_cast<unsigned int>(header.id) | kHeaderTokenBit | kEndTokenBit);
    } else {
        PutBytes("</", 2);
        PutBytes(header.text, std::strlen(header.text));
        PutBytes(">", 1);
    }
    return *this;
}

VarnStream& VarnStream::operator<<(const Label& label) {
    if (IsBinary()) {
        WriteBinary(static_cast<unsigned int>(label.id) | kLabelTokenBit);
    } else {
        PutBytes(label.text, std::strlen(label.text));
        PutBytes("=", 1);
    }
    return *this;
}

// ---- reading ------------------------------------------------------------------------------------

VarnStream& VarnStream::operator>>(Header& header) {
    if (IsBinary())
        ReadHeaderBinary(header);
    else
        ReadHeaderText(header);
    return *this;
}

void VarnStream::ReadHeaderText(Header& header) {
    char bracket;
    ReadC(&bracket, 1);
    char word[kTokenBufferSize + 1];
    const char* lookup = word;
    bool end = false;
    if (m_version < kAngleVersion) {
        ParseToken(word, ']');
        end = std::strncmp(word, "END", 3) == 0;
        if (end)
            lookup = word + 3;
    } else {
        // At most 255 bytes are read, the closing ">" among them.
        char scratch[kTokenBufferSize];
        const std::string_view bytes = Peek(scratch, kTokenBufferSize);
        const std::size_t close = bytes.find('>');
        const std::size_t length = close != std::string_view::npos ? close : bytes.size();
        std::memcpy(word, bytes.data(), length);
        word[length] = '\0';
        Advance(close != std::string_view::npos ? close + 1 : length);
        SetStatusMeter();
        end = word[0] == '/';
        if (end)
            lookup = word + 1;
    }
    SkipWhite();
    CopyTokenText(header.text, word);
    header.id = LookUpSectionWord(lookup);
    if (end)
        header.id |= fileio::kEndHeaderBit;
}

void VarnStream::ReadHeaderBinary(Header& header) {
    m_headerPosition = Position();
    unsigned int word = 0;
    ReadBinary(word);
    m_lastTokenWasHeader = true;
    m_lastTokenWasLabel = false;
    if (word == kNoIdWord) {
        header.id = -1;
        GetHeaderTextFromID(-1, header.text);
        return;
    }
    word &= ~kHeaderTokenBit;
    if ((word & kLabelTokenBit) != 0) {
        m_lastTokenWasLabel = true;
        word &= ~kLabelTokenBit;
        GetLabelTextFromID(static_cast<int>(word & ~kEndTokenBit), header.text);
        header.id = -1;
        return;
    }
    header.id = static_cast<int>(word);
    GetHeaderTextFromID(header.id, header.text);
    // The first byte decides almost always; the text buffer holds 80 bytes, so the rest of
    // the prefix can be compared whole.
    if (header.text[0] == kHeaderNotFound[0] &&
        std::memcmp(header.text, kHeaderNotFound, sizeof kHeaderNotFound - 1) == 0)
        GetLabelTextFromID(static_cast<int>(word & ~kEndTokenBit), header.text);
}

VarnStream& VarnStream::operator>>(Label& label) {
    if (IsBinary()) {
        m_headerPosition = Position();
        unsigned int word = 0;
        ReadBinary(word);
        m_lastTokenWasHeader = false;
        m_lastTokenWasLabel = true;
        if (word != kNoIdWord)
            word &= ~kLabelTokenBit;
        label.id = static_cast<int>(word);
        GetLabelTextFromID(label.id, label.text);
    } else {
        char word[kTokenBufferSize];
        SkipWhite();
        ParseToken(word, '=');
        CopyTokenText(label.text, word);
        label.id = GetLabelIDFromText(label.text);
    }
    return *this;
}

// ---- peeking
// -------------------------------------------------------------------------------------

bool VarnStream::PeekWord(unsigned int& word) {
    char scratch[sizeof word];
    const std::string_view bytes = Peek(scratch, sizeof word);
    word = 0;
    std::memcpy(&word, bytes.data(), bytes.size());
    return bytes.size() == sizeof word;
}

bool VarnStream::IsTextHeaderNext(bool anyVersion) {
    SkipWhite();
    char scratch[1];
    const std::string_view bytes = Peek(scratch, 1);
    return !bytes.empty() && IsHeaderBracket(bytes[0], m_version, anyVersion);
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
    const unsigned long long at = GetPos();
    char c = '\0';
    while (ReadC(&c, 1) == 1 && c != '=' && !IsLineEnd(c)) {
    }
    Seek(static_cast<long long>(at), SM_BEGIN);
    return c == '=';
}

// ---- skipping
// ---------------------------------------------------------------------------------------

bool VarnStream::SkipHeader(const Header& header) {
    return IsBinary() ? SkipHeaderBinary(header) : SkipHeaderText(header);
}

bool VarnStream::SkipHeaderText(const Header& header) {
    const unsigned long long start = GetPos();
    char endWord[fileio::kTokenTextSize + 3];
    std::strcpy(endWord, m_version < kAngleVersion ? "END" : "/");
    std::strcat(endWord, header.text);

    MemoryStream line;
    line.SetSize(1024);
    int depth = 0;
    while (ReadLine(line)) {
        line.SetMode(FM_LOADING);
        line.SetVersion(m_version);
        if (!line.IsHeaderAt0())
            continue;
        Header found;
        line >> found;
        if (std::strcmp(found.text, header.text) == 0) {
            ++depth;
        } else if (CompareNoCase(found.text, endWord) == 0) {
            if (depth == 0)
                return true;
            --depth;
        }
    }
    Seek(static_cast<long long>(start), SM_BEGIN);
    return false;
}

// The scan tests the word at every byte position. Reading a header token there can only end
// the scan when its id is the wanted one, so the word is tested first and only a match is
// read as a token (which records it as the last token read).
bool VarnStream::SkipHeaderBinary(const Header& header) {
    const unsigned long long start = GetPos();
    const bool pluginProperties = header.id == kPluginPropertiesId;
    const int wanted = header.id | fileio::kEndHeaderBit;
    OffFailed();
    for (unsigned long long at = start;; ++at) {
        Seek(static_cast<long long>(at), SM_BEGIN);
        if (VirtualEof() || (m_mode & FM_FAILED) != 0)
            break;
        unsigned int word;
        if (!PeekWord(word) || (word & kHeaderTokenBit) == 0)
            continue;
        const bool match =
            pluginProperties ? word == kPluginPropertiesWord : HeaderIdOfWord(word) == wanted;
        if (match) {
            Header token;
            *this >> token;
            return true;
        }
    }
    Seek(static_cast<long long>(start), SM_BEGIN);
    return false;
}

bool VarnStream::SkipPast(unsigned int id) {
    if (IsBinary())
        return SkipPastBinary(id);
    MemoryStream line;
    while (ReadLine(line)) {
        const char* data = reinterpret_cast<const char*>(line.GetData());
        const std::size_t length = static_cast<std::size_t>(line.GetLength());
        const char* equals = static_cast<const char*>(std::memchr(data, '=', length));
        int found;
        if (equals != nullptr) {
            char word[fileio::kTokenTextSize];
            const std::size_t n = static_cast<std::size_t>(equals - data);
            const std::size_t kept = n < sizeof word - 1 ? n : sizeof word - 1;
            std::memcpy(word, data, kept);
            word[kept] = '\0';
            found = GetLabelIDFromText(word);
        } else {
            line.SetMode(FM_LOADING);
            line.SetVersion(m_version);
            if (!line.IsHeaderAt0())
                continue;
            Header header;
            line >> header;
            found = header.id;
        }
        if (static_cast<unsigned int>(found) == id)
            return true;
    }
    return false;
}

bool VarnStream::SkipPastBinary(unsigned int id) {
    for (unsigned long long at = GetPos();; ++at) {
        Seek(static_cast<long long>(at), SM_BEGIN);
        unsigned int word;
        if (!PeekWord(word))
            break;
        if ((word & kHeaderTokenBit) != 0) {
            if (static_cast<unsigned int>(HeaderIdOfWord(word)) == id) {
                Header header;
                *this >> header;
                return true;
            }
        } else if ((word & kLabelTokenBit) != 0 && (word & ~kLabelTokenBit) == id) {
            Label label;
            *this >> label;
            return true;
        }
    }
    Seek(0, SM_END);
    return false;
}
