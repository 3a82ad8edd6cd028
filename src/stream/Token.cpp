// Token.cpp - the Header, EndHeader and Label tokens.

#include "fileio/stream/Token.h"

#include "stream/TokenText.h"

Header::Header() noexcept : text{}, id(-1) {}

Header::Header(int headerId) noexcept : text{}, id(headerId) {
    GetHeaderTextFromID(id, text);
}

Header::Header(int headerId, const char* word) noexcept : text{}, id(headerId) {
    if (word != nullptr)
        fileio::detail::CopyTokenText(text, word);
}

EndHeader::EndHeader(int headerId) noexcept : Header(headerId | fileio::kEndHeaderBit) {}

EndHeader::EndHeader(int headerId, const char* word) noexcept
    : Header(headerId | fileio::kEndHeaderBit, word) {}

Label::Label() noexcept : text{}, id(-1) {}

Label::Label(int labelId) noexcept : text{}, id(labelId) {
    GetLabelTextFromID(id, text);
}

Label::Label(const char* word) noexcept : text{}, id(-1) {
    if (word != nullptr) {
        fileio::detail::CopyTokenText(text, word);
        id = GetLabelIDFromText(text);
    }
}
