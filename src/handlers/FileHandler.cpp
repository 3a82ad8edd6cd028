// FileHandler.cpp - the file handler's defaults and its slot.

#include "fileio/handlers/FileHandler.h"

namespace {
FileHandler* g_fileHandler = nullptr;
} // namespace

FileHandler::~FileHandler() = default;
bool FileHandler::IsPrompt() {
    return true;
}
bool FileHandler::IsContinueLoading() {
    return true;
}
void FileHandler::MissingFile(const String&) {}

FileHandler* GetFileHandler() {
    return g_fileHandler;
}

FileHandler* SetFileHandler(FileHandler* handler) {
    FileHandler* previous = g_fileHandler;
    g_fileHandler = handler;
    return previous;
}
