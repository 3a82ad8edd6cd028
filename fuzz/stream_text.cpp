// Fuzz target: the text reader driven by arbitrary input (see StreamFuzzDriver.h).

#include "StreamFuzzDriver.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    streamfuzz::Drive(data, size, false);
    return 0;
}
