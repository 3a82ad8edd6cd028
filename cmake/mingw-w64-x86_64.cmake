# Cross build for 64-bit Windows with MinGW-w64 (posix threads model). The test programs
# run under Wine through CMAKE_CROSSCOMPILING_EMULATOR, so CTest runs them unchanged.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The compiler's runtime (libgcc, libstdc++, winpthread) is linked in statically, so that
# neither Wine nor a host needs MinGW's DLLs.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")

find_program(FILEIO_WINE NAMES wine64 wine PATHS /usr/lib/wine /usr/bin NO_DEFAULT_PATH)
if(NOT FILEIO_WINE)
    find_program(FILEIO_WINE NAMES wine64 wine)
endif()
if(FILEIO_WINE)
    # Through a script that hands the output on only when the program has ended.
    set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/RunUnderWine.sh ${FILEIO_WINE})
endif()
