// AtomicSave.cpp - the save that replaces its target atomically, built on the file
// services so that a test that replaces one of them fails the save at that step.

#include "platform/Platform.h"

namespace fileio::platform {

bool AtomicSave::Begin(const char* target, std::string& error) {
    Abandon();
    m_final = Files().finalPath(target);
    m_file = Files().createBeside(m_final.c_str(), m_temporary);
    if (m_file == kNoFile) {
        error = System().lastErrorText();
        m_temporary.clear();
        return false;
    }
    return true;
}

bool AtomicSave::Commit(std::string& error) {
    if (m_file == kNoFile) {
        error = "no save was begun";
        return false;
    }
    bool ok = Files().flushFile(m_file);
    if (!ok)
        error = System().lastErrorText();
    const FileHandle file = m_file;
    m_file = kNoFile;
    if (!Files().closeFile(file) && ok) {
        error = System().lastErrorText();
        ok = false;
    }
    if (ok && !Files().replaceFile(m_temporary.c_str(), m_final.c_str())) {
        error = System().lastErrorText();
        ok = false;
    }
    if (!ok)
        Files().removeFile(m_temporary.c_str());
    m_temporary.clear();
    return ok;
}

void AtomicSave::Abandon() {
    if (m_file != kNoFile) {
        Files().closeFile(m_file);
        m_file = kNoFile;
    }
    if (!m_temporary.empty()) {
        Files().removeFile(m_temporary.c_str());
        m_temporary.clear();
    }
}

bool SaveFileAtomically(const char* target, const void* data, std::size_t size,
                        std::string& error) {
    AtomicSave save;
    if (!save.Begin(target, error))
        return false;
    if (!Files().writeFile(save.File(), data, size)) {
        error = System().lastErrorText();
        return false; // the destructor removes the temporary file
    }
    return save.Commit(error);
}

} // namespace fileio::platform
