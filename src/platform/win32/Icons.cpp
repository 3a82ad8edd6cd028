// Icons.cpp - an icon's pixels through the system's device-independent bitmaps.

#include "platform/Platform.h"

#include <windows.h>

#include <cstring>

namespace fileio::platform {

namespace {

/// A 1-bit bitmap's header and its two colours: black (opaque) and white (transparent).
struct MaskInfo {
    BITMAPINFOHEADER header;
    RGBQUAD colors[2];
};

BITMAPINFOHEADER HeaderFor(int width, int height, WORD bitCount) {
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    header.biWidth = width;
    header.biHeight = height; // positive: bottom row first
    header.biPlanes = 1;
    header.biBitCount = bitCount;
    header.biCompression = BI_RGB;
    return header;
}

MaskInfo MaskInfoFor(int width, int height) {
    MaskInfo info{};
    info.header = HeaderFor(width, height, 1);
    info.colors[1] = RGBQUAD{255, 255, 255, 0};
    return info;
}

std::size_t MaskBytes(int width, int height) {
    return ((static_cast<std::size_t>(width) + 31) / 32) * 4 * static_cast<std::size_t>(height);
}

bool IconToImage(void* icon, IconImage& image) {
    ICONINFO info{};
    if (icon == nullptr || !GetIconInfo(static_cast<HICON>(icon), &info))
        return false;
    bool read = false;
    BITMAP bitmap{};
    if (info.hbmColor != nullptr && GetObjectW(info.hbmColor, sizeof bitmap, &bitmap) != 0 &&
        bitmap.bmWidth > 0 && bitmap.bmHeight > 0) {
        const int width = bitmap.bmWidth;
        const int height = bitmap.bmHeight;
        image.width = width;
        image.height = height;
        image.color.assign(static_cast<std::size_t>(width) * height * 4, 0);
        image.mask.assign(MaskBytes(width, height), 0);
        BITMAPINFO colorInfo{};
        colorInfo.bmiHeader = HeaderFor(width, height, 32);
        MaskInfo maskInfo = MaskInfoFor(width, height);
        HDC screen = GetDC(nullptr);
        read = GetDIBits(screen, info.hbmColor, 0, height, image.color.data(), &colorInfo,
                         DIB_RGB_COLORS) == height &&
               GetDIBits(screen, info.hbmMask, 0, height, image.mask.data(),
                         reinterpret_cast<BITMAPINFO*>(&maskInfo), DIB_RGB_COLORS) == height;
        ReleaseDC(nullptr, screen);
    }
    if (info.hbmColor != nullptr)
        DeleteObject(info.hbmColor);
    if (info.hbmMask != nullptr)
        DeleteObject(info.hbmMask);
    return read;
}

void* ImageToIcon(const IconImage& image) {
    const int width = image.width;
    const int height = image.height;
    if (width <= 0 || height <= 0 ||
        image.color.size() != static_cast<std::size_t>(width) * height * 4 ||
        image.mask.size() != MaskBytes(width, height))
        return nullptr;
    HDC screen = GetDC(nullptr);
    BITMAPINFO colorInfo{};
    colorInfo.bmiHeader = HeaderFor(width, height, 32);
    void* colorBits = nullptr;
    HBITMAP color = CreateDIBSection(screen, &colorInfo, DIB_RGB_COLORS, &colorBits, nullptr, 0);
    HBITMAP mask = CreateBitmap(width, height, 1, 1, nullptr);
    HICON icon = nullptr;
    if (color != nullptr && mask != nullptr) {
        std::memcpy(colorBits, image.color.data(), image.color.size());
        MaskInfo maskInfo = MaskInfoFor(width, height);
        if (SetDIBits(screen, mask, 0, height, image.mask.data(),
                      reinterpret_cast<BITMAPINFO*>(&maskInfo), DIB_RGB_COLORS) == height) {
            ICONINFO info{};
            info.fIcon = TRUE;
            info.hbmMask = mask;
            info.hbmColor = color;
            icon = CreateIconIndirect(&info);
        }
    }
    if (color != nullptr)
        DeleteObject(color);
    if (mask != nullptr)
        DeleteObject(mask);
    ReleaseDC(nullptr, screen);
    return icon;
}

void DestroyIconHandle(void* icon) {
    if (icon != nullptr)
        DestroyIcon(static_cast<HICON>(icon));
}

} // namespace

IconServices& Icons() {
    static IconServices services{
        .iconToImage = IconToImage,
        .imageToIcon = ImageToIcon,
        .destroyIcon = DestroyIconHandle,
    };
    return services;
}

} // namespace fileio::platform
