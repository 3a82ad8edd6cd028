// Tokens.cpp - headers, end headers and labels: writing, reading, peeking and skipping.

#include "fileio/stream/VarnStream.h"

#include "core/StringAscii.h"
#include "stream/SpanStream.h"
#include "stream/StreamBytes.h"
#include "stream/TokenText.h"
#include "stream/VocabularyTables.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

using namespace fileio::detail;

namespace {

/// The id of a word that names a section: a header word, else a label word (label words
/// may open sections), else -1.
int LookUpSectionWord(std::string_view word) {
    const int id = HeaderIdOf(word);
    return id != -1 ? id : LabelIdOf(word);
}

/// The word as the C string functions see it: up to its first NUL byte.
std::string_view UpToNul(std::string_view word) {
    return word.substr(0, word.find('\0'));
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
        WriteBinary(static_cast<unsigned int>(header.id) | kHeaderTokenBit | kEndHeaderWordBit);
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

bool VarnStream::TakeFromWindow(char delimiter, std::size_t limit, std::string_view& word) {
    // Words are short: a few bytes are looked at here before the library's search is called.
    constexpr std::size_t kShortWord = 16;
    const auto available = static_cast<std::size_t>(Available());
    const std::size_t length = available < limit ? available : limit;
    const unsigned char* const begin = m_window.data + m_window.position;
    const unsigned char* found = nullptr;
    const std::size_t near = length < kShortWord ? length : kShortWord;
    for (std::size_t i = 0; i < near && found == nullptr; ++i)
        if (begin[i] == static_cast<unsigned char>(delimiter))
            found = begin + i;
    if (found == nullptr && length > near)
        found =
            static_cast<const unsigned char*>(std::memchr(begin + near, delimiter, length - near));
    if (found == nullptr)
        return false;
    word = {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(found - begin)};
    m_window.position += word.size() + 1;
    return true;
}

// The square generation's header ends just after its "]"; the angle generation's reads at
// most 255 bytes up to its ">" and then skips the white space after it. Where the window
// holds the whole word it is looked up where it lies.
void VarnStream::ReadHeaderText(Header& header) {
    NextByte(); // the opening bracket
    char buffer[kTokenBufferSize + 1];
    std::string_view word;
    std::string_view prefix;
    if (m_generation != TextGeneration::Angle) {
        if (TakeFromWindow(']', SIZE_MAX, word)) {
            word = word.substr(0, kTokenBufferSize - 1);
        } else {
            ParseToken(buffer, ']');
            word = buffer;
        }
        prefix = "END";
    } else {
        if (!TakeFromWindow('>', kTokenBufferSize, word)) {
            std::size_t length = 0;
            for (std::size_t read = 0; read < kTokenBufferSize; ++read) {
                const int c = NextByte();
                if (c < 0 || c == '>')
                    break;
                buffer[length++] = static_cast<char>(c);
            }
            word = {buffer, length};
        }
        prefix = "/";
    }
    word = UpToNul(word);
    const bool end = word.substr(0, prefix.size()) == prefix;
    CopyTokenText(header.text, word);
    header.id = LookUpSectionWord(end ? word.substr(prefix.size()) : word);
    if (end)
        header.id |= fileio::kEndHeaderBit;
    if (m_generation == TextGeneration::Angle) {
        SetStatusMeter();
        SkipWhite();
    }
}

void VarnStream::ReadHeaderBinary(Header& header) {
    m_headerPosition = Position();
    unsigned int word = 0;
    ReadBinary(word);
    m_lastTokenWasHeader = true;
    // The word of no id leaves the label flag as it was.
    if (word == kNoIdWord) {
        header.id = -1;
        GetHeaderTextFromID(-1, header.text);
        return;
    }
    m_lastTokenWasLabel = false;
    word &= ~kHeaderTokenBit;
    if ((word & kLabelTokenBit) != 0) {
        m_lastTokenWasLabel = true;
        word &= ~kLabelTokenBit;
        GetLabelTextFromID(static_cast<int>(word & ~kEndHeaderWordBit), header.text);
        header.id = -1;
        return;
    }
    header.id = static_cast<int>(word);
    GetHeaderTextFromID(header.id, header.text);
    // The first byte decides almost always; the text buffer holds 80 bytes, so the rest of
    // the prefix can be compared whole.
    if (header.text[0] == kHeaderNotFound[0] &&
        std::memcmp(header.text, kHeaderNotFound, sizeof kHeaderNotFound - 1) == 0)
        GetLabelTextFromID(static_cast<int>(word & ~kEndHeaderWordBit), header.text);
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
        // The text a label keeps: at most 79 bytes, up to a NUL; its id is that text's.
        char buffer[kTokenBufferSize];
        std::string_view word;
        if (!TakeFromWindow('=', SIZE_MAX, word)) {
            ParseToken(buffer, '=');
            word = buffer;
        }
        word = UpToNul(word.substr(0, fileio::kTokenTextSize - 1));
        CopyTokenText(label.text, word);
        label.id = LabelIdOf(word);
    }
    return *this;
}

// ---- skipping -----------------------------------------------------------------------------------

bool VarnStream::SkipHeader(const Header& header) {
    return IsBinary() ? SkipHeaderBinary(header) : SkipHeaderText(header);
}

bool VarnStream::SkipHeaderText(const Header& header) {
    const unsigned long long start = Position();
    char endWord[fileio::kTokenTextSize + 3];
    std::strcpy(endWord, m_generation == TextGeneration::Angle ? "/" : "END");
    std::strcat(endWord, header.text);

    std::string spill;
    std::string_view line;
    int depth = 0;
    while (NextLine(spill, line)) {
        if (line.empty() || !IsHeaderBracket(line[0], m_generation, false))
            continue;
        Header found;
        SpanStream(line, m_version) >> found;
        if (std::strcmp(found.text, header.text) == 0) {
            ++depth;
        } else if (CompareNoCase(found.text, endWord) == 0) {
            if (depth == 0)
                return true;
            --depth;
        }
    }
    MoveTo(start);
    return false;
}

// The scan tests the word at every byte position. Reading a header token there can only end
// the scan when its id is the wanted one, so the word is tested first and only a match is
// read as a token (which records it as the last token read).
bool VarnStream::SkipHeaderBinary(const Header& header) {
    const unsigned long long start = Position();
    const bool pluginProperties = header.id == kPluginPropertiesId;
    const int wanted = header.id | fileio::kEndHeaderBit;
    OffFailed();
    for (unsigned long long at = start;; ++at) {
        MoveTo(at);
        if (VirtualEof() || HasFailed())
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
    MoveTo(start);
    return false;
}

bool VarnStream::SkipPast(unsigned int id) {
    return IsBinary() ? SkipPastBinary(id) : SkipPastText(id);
}

// A line holding "=" is a label line, named by the text before the "="; a line that starts
// with a header bracket is read as the header reader reads it.
bool VarnStream::SkipPastText(unsigned int id) {
    std::string spill;
    std::string_view line;
    while (NextLine(spill, line)) {
        int found;
        if (const std::size_t equals = line.find('='); equals != std::string_view::npos) {
            char word[fileio::kTokenTextSize];
            CopyTokenText(word, line.substr(0, equals));
            found = GetLabelIDFromText(word);
        } else if (!line.empty() && IsHeaderBracket(line[0], m_generation, false)) {
            Header header;
            SpanStream(line, m_version) >> header;
            found = header.id;
        } else {
            continue;
        }
        if (static_cast<unsigned int>(found) == id)
            return true;
    }
    return false;
}

bool VarnStream::SkipPastBinary(unsigned int id) {
    for (unsigned long long at = Position();; ++at) {
        MoveTo(at);
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
