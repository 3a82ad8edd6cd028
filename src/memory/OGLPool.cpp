// OGLPool.cpp - the holder of one buffer.

#include "fileio/memory/Pool.h"
#include "memory/SizeArithmetic.h"

OGLPool::~OGLPool() {
    FreePool();
}

void* OGLPool::Alloc(unsigned long long n) {
    const unsigned long long rounded = fileio::detail::RoundUpTo8(n);
    if (rounded == 0)
        return nullptr;
    m_buffer = PlatformAlloc(rounded);
    return m_buffer;
}

void OGLPool::FreePool() {
    if (m_buffer == nullptr)
        return;
    PlatformFree(m_buffer);
    m_buffer = nullptr;
}
