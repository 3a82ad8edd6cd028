// NamedPools.h - the library's named pools of the suite's object kinds, and the
// process-wide memory figures.
//
// Each kind of object lives in a pool of its own, so that its memory can be measured,
// reported and thrown away at once. The seventeen VarnPool kinds are safe to use from
// several threads; the SimplePool kinds, the OGL buffer, the RAM mark and the swapping flag
// belong to one thread at a time.
#pragma once

#include "fileio/Export.h"

/// The string pool: n + 1 zero-filled bytes, so a caller passing a text length always has
/// room for the terminating NUL. AllocString(0) returns one zero byte.
FILEIO_API void* AllocString(unsigned long long n);
/// Gives a string buffer back to the string pool; null is ignored.
FILEIO_API void FreeString(void* p);

/// All memory obtained through PlatformAlloc, by every pool, headers included.
FILEIO_API unsigned long long TotalRAM();
