# Compiler options shared by the library, its tests, benchmarks and fuzz targets.
add_library(fileio_options INTERFACE)

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(fileio_options INTERFACE
        -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast
        -Wcast-align -Woverloaded-virtual -Wimplicit-fallthrough
        # Floating-point results must be the same on every compiler and at every
        # optimisation level: no contraction of a*b+c into a fused multiply-add unless the
        # code asks for one with std::fma. Both targets are x86-64, whose SSE arithmetic
        # has no excess precision (FLT_EVAL_METHOD 0; checked in the Time tests).
        -ffp-contract=off -fno-fast-math)
elseif(MSVC)
    target_compile_options(fileio_options INTERFACE /W4 /fp:precise /permissive-)
endif()
