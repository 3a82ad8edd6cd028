// Tokens.cpp - headers, end headers and labels: writing, reading, peeking and skipping.

#include "fileio/stream/VarnStream.h"

#include "core/StringAscii.h"
#include "stream/SpanStream.h"
#include "stream/StreamBytes.h"
#include "stream/TokenText.h"

#include <cstring>
#include <string>

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

// The square generation's header ends just after its "]"; the angle generation's reads at
// most 255 bytes up to its ">" and then skips the white space after it.
void VarnStream::ReadHeaderText(Header& header) {
    NextByte(); // the opening bracket
    char word[kTokenBufferSize + 1];
    const char* lookup = word;
    bool end = false;
    if (m_generation != TextGeneration::Angle) {
        ParseToken(word, ']');
        end = std::strncmp(word, "END", 3) == 0;
        if (end)
            lookup = word + 3;
    } else {
        std::size_t length = 0;
        for (std::size_t read = 0; read < kTokenBufferSize; ++read) {
            const int c = NextByte();
            if (c < 0 || c == '>')
                break;
            word[length++] = static_cast<char>(c);
        }
        word[length] = '\0';
        SetStatusMeter();
        end = word[0] == '/';
        if (end)
            lookup = word + 1;
        SkipWhite();
    }
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
        char word[kTokenBufferSize];
        ParseToken(word, '=');
        CopyTokenText(label.text, word);
        label.id = GetLabelIDFromText(label.text);
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
