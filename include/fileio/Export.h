// Export.h - the FILEIO_API marker of the library's exported names.
//
// Every class and free function of the public interface carries FILEIO_API; everything
// else in the library is hidden. A host includes the headers as they are: on Windows the
// marker then imports from FileIO.dll. FILEIO_BUILDING is set while the library itself is
// compiled; FILEIO_STATIC is set by code that links the library's objects directly.
#pragma once

#if defined(_WIN32)
#if defined(FILEIO_STATIC)
#define FILEIO_API
#elif defined(FILEIO_BUILDING)
#define FILEIO_API __declspec(dllexport)
#else
#define FILEIO_API __declspec(dllimport)
#endif
#else
#define FILEIO_API __attribute__((visibility("default")))
#endif
