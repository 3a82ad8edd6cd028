// A host linking the installed library: it must compile against the umbrella header, link
// against the shared library and run.
#include <fileio/FileIO.h>

int main() {
    void* p = PlatformAlloc(16);
    PlatformFree(p);
    return 0;
}
