// Icons.cpp - icons do not exist on POSIX systems: every service reports that it cannot.

#include "platform/Platform.h"

namespace fileio::platform {

namespace {

bool NoIconToImage(void*, IconImage&) {
    return false;
}
void* NoImageToIcon(const IconImage&) {
    return nullptr;
}
void NoDestroyIcon(void*) {}

} // namespace

IconServices& Icons() {
    static IconServices services{
        .iconToImage = NoIconToImage,
        .imageToIcon = NoImageToIcon,
        .destroyIcon = NoDestroyIcon,
    };
    return services;
}

} // namespace fileio::platform
