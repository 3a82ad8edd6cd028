// Class identities through a stream, the bitmap structures and icons.

#include "StreamTestSupport.h"

#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

using namespace streamtest;
using fileio::platform::IconImage;
using fileio::platform::Icons;
using fileio::platform::IconServices;
using fileio::platform::ScopedServices;

namespace {

// The structures are built from their bytes, which are their stream form in binary.

template <class T> T& As(std::vector<unsigned char>& bytes) {
    return *reinterpret_cast<T*>(bytes.data());
}

std::vector<unsigned char> FromHex(const std::string& hex) {
    std::vector<unsigned char> bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 3)
        bytes.push_back(static_cast<unsigned char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

/// An info header with the fields given (2 rows high), then `after` zero bytes.
std::vector<unsigned char> InfoHeader(std::int32_t width, std::uint16_t bitCount,
                                      std::uint32_t sizeImage, std::uint32_t used,
                                      std::size_t after) {
    std::vector<unsigned char> block(40 + after, 0);
    const std::int32_t height = 2;
    block[0] = 40;
    std::memcpy(&block[4], &width, 4);
    std::memcpy(&block[8], &height, 4);
    std::memcpy(&block[14], &bitCount, 2);
    std::memcpy(&block[20], &sizeImage, 4);
    std::memcpy(&block[32], &used, 4);
    return block;
}

const char* const kFileHeader = "42 4D E8 03 00 00 00 00 00 00 36 00 00 00";
// 40, 2 x -3, 1 plane, 1 bit, BI_RGB, 12 bytes, 2835 x 2835, 0 used, 0 important.
const char* const kInfoHeader =
    "28 00 00 00 02 00 00 00 FD FF FF FF 01 00 01 00 00 00 00 00 0C 00 00 00 13 0B 00 00 "
    "13 0B 00 00 00 00 00 00 00 00 00 00";

/// A 2 x 2 icon: four colours and a mask with the top-left pixel transparent.
IconImage SmallIcon() {
    IconImage image;
    image.width = 2;
    image.height = 2;
    for (int i = 0; i < 16; ++i)
        image.color.push_back(static_cast<unsigned char>(i * 16 + 1));
    image.mask = {0x00, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00};
    return image;
}

IconImage g_source = SmallIcon(); // what the fake system's icon holds
IconImage g_made;
int g_handle = 0;

struct FakeIcons {
    FakeIcons() {
        Icons().iconToImage = [](void* icon, IconImage& image) {
            if (icon != &g_handle)
                return false;
            image = g_source;
            return true;
        };
        Icons().imageToIcon = [](const IconImage& image) -> void* {
            g_made = image;
            return &g_handle;
        };
    }
    ScopedServices<IconServices> saved{Icons()};
};

} // namespace

TEST(StreamClasses, StoreWritesSchemaLengthAndNameAndLoadFindsTheClass) {
    static const RuntimeClass model{"Model", 3};
    static const RuntimeClass pluginModel{"Model", 9};
    static const RuntimeClass light{"Light", 1};
    RuntimeClassList plugin;
    plugin.Add(pluginModel);
    plugin.Add(light);
    AttachModuleClasses(plugin);
    GetApplicationClasses().Add(model);
    GetApplicationClasses().Add(model);

    MemoryStream stream;
    Store(stream, true);
    stream.StoreRuntimeClass(model);
    stream.StoreRuntimeClass(light);
    EXPECT_EQ(Hex(Bytes(stream).substr(0, 9)), "03 00 05 00 4D 6F 64 65 6C");

    MemoryStream reader;
    LoadBack(reader, stream);
    unsigned int schema = 0;
    // The application's list is searched before the modules'.
    EXPECT_EQ(reader.LoadRuntimeClass(&schema), &model);
    EXPECT_EQ(schema, 3u);
    EXPECT_EQ(reader.LoadRuntimeClass(nullptr), &light);

    GetApplicationClasses().Remove(model);
    EXPECT_EQ(FindRuntimeClass("Model", 5), &pluginModel);
    EXPECT_EQ(FindRuntimeClass("model", 5), nullptr);
    EXPECT_EQ(FindRuntimeClass("Mode", 4), nullptr);
    DetachModuleClasses(plugin);
    EXPECT_EQ(FindRuntimeClass("Light", 5), nullptr);
}

TEST(StreamClasses, LoadRefusesLongShortAndUnknownNames) {
    // A registered class whose name is 64 bytes long is refused; one of 63 is found.
    static const std::string long63(63, 'a'), long64(64, 'a');
    static const RuntimeClass fits{long63.c_str(), 1};
    static const RuntimeClass tooLong{long64.c_str(), 1};
    GetApplicationClasses().Add(fits);
    GetApplicationClasses().Add(tooLong);
    MemoryStream reader;
    Load(reader, Raw({1, 0, 63, 0}) + long63, FM_BINARY);
    EXPECT_EQ(reader.LoadRuntimeClass(nullptr), &fits);
    const std::tuple<const char*, std::string, unsigned int> rows[] = {
        {"unknown name", Raw({2, 0, 4, 0}) + "Ghost", 2},
        {"name of 64 bytes", Raw({1, 0, 64, 0}) + long64, 1},
        {"name cut short", Raw({1, 0, 5, 0}) + "Li", 1},
        {"nothing", "", 0},
    };
    for (const auto& [name, data, expectedSchema] : rows) {
        SCOPED_TRACE(name);
        Load(reader, data, FM_BINARY);
        unsigned int schema = 77;
        EXPECT_EQ(reader.LoadRuntimeClass(&schema), nullptr);
        EXPECT_EQ(schema, expectedSchema);
    }
    GetApplicationClasses().Remove(fits);
    GetApplicationClasses().Remove(tooLong);
}

TEST(StreamBitmaps, HeadersFieldByField) {
    std::vector<unsigned char> file = FromHex(kFileHeader);
    std::vector<unsigned char> info = FromHex(kInfoHeader);
    BothForms written;
    written << As<tagBITMAPFILEHEADER>(file) << sp << As<tagBITMAPINFOHEADER>(info);
    EXPECT_EQ(Bytes(written.text), "19778 1000 0 0 54 40 2 -3 1 1 0 12 2835 2835 0 0");
    EXPECT_EQ(Hex(Bytes(written.binary)), std::string(kFileHeader) + " " + kInfoHeader);
    for (const MemoryStream* form : {&written.text, &written.binary}) {
        SCOPED_TRACE(form->IsBinary() ? "binary" : "text");
        MemoryStream reader;
        LoadBack(reader, *form);
        std::vector<unsigned char> fileBack(14, 0xEE), infoBack(40, 0xEE);
        reader >> As<tagBITMAPFILEHEADER>(fileBack) >> As<tagBITMAPINFOHEADER>(infoBack);
        EXPECT_EQ(fileBack, file);
        EXPECT_EQ(infoBack, info);
    }
}

TEST(StreamBitmaps, InfoCarriesItsColourTable) {
    const std::tuple<const char*, std::uint16_t, std::uint32_t, unsigned int> rows[] = {
        {"1 bit", 1, 0, 2},
        {"8 bits", 8, 0, 256},
        {"24 bits", 24, 0, 0},
        {"8 bits, 3 used", 8, 3, 3},
    };
    for (const auto& [name, bitCount, used, colors] : rows) {
        SCOPED_TRACE(name);
        std::vector<unsigned char> block = InfoHeader(2, bitCount, 0, used, 4 * 256);
        for (std::size_t i = 40; i < block.size(); ++i)
            block[i] = static_cast<unsigned char>(i * 7);
        EXPECT_EQ(BitmapColorCount(As<tagBITMAPINFOHEADER>(block)), colors);

        BothForms written;
        written << As<tagBITMAPINFO>(block);
        EXPECT_EQ(written.binary.GetLength(), 40u + 4u * colors);
        for (const MemoryStream* form : {&written.text, &written.binary}) {
            SCOPED_TRACE(form->IsBinary() ? "binary" : "text");
            MemoryStream reader;
            LoadBack(reader, *form);
            std::vector<unsigned char> back(block.size(), 0);
            reader >> As<tagBITMAPINFO>(back);
            EXPECT_FALSE(reader.IsFailed());
            EXPECT_TRUE(reader.VirtualEof());
            std::vector<unsigned char> expected(block.begin(), block.begin() + 40 + 4 * colors);
            expected.resize(block.size(), 0);
            EXPECT_EQ(back, expected);
        }
    }
}

TEST(StreamBitmaps, ATableOfMoreThan256ColoursIsRefused) {
    std::vector<unsigned char> block = InfoHeader(2, 8, 0, 100000, 4);
    MemoryStream writer;
    Store(writer, true);
    writer << As<tagBITMAPINFO>(block);
    EXPECT_TRUE(writer.IsFailed());
    EXPECT_EQ(writer.GetLength(), 40u);
    MemoryStream reader;
    Load(reader, Bytes(writer) + std::string(64, 'x'), FM_BINARY);
    reader >> As<tagBITMAPINFO>(block);
    EXPECT_TRUE(reader.IsFailed());
    EXPECT_EQ(reader.GetPos(), 40u);
}

TEST(StreamIcons, AnIconIsItsColourImageAndMask) {
    const FakeIcons fake;
    const HICON icon = reinterpret_cast<HICON>(&g_handle);

    BothForms written;
    written << icon;
    const std::string colorHeader = "28 00 00 00 02 00 00 00 02 00 00 00 01 00 20 00 00 00 00 00 "
                                    "10 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
    const std::string maskHeader = "28 00 00 00 02 00 00 00 02 00 00 00 01 00 01 00 00 00 00 00 "
                                   "08 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
    EXPECT_EQ(Hex(Bytes(written.binary)), colorHeader +
                                              " 01 11 21 31 41 51 61 71 81 91 A1 B1 C1 D1 E1 F1 " +
                                              maskHeader + " 00 00 00 00 80 00 00 00");
    for (const MemoryStream* form : {&written.text, &written.binary}) {
        SCOPED_TRACE(form->IsBinary() ? "binary" : "text");
        g_made = IconImage();
        MemoryStream reader;
        LoadBack(reader, *form);
        HICON back = nullptr;
        reader >> back;
        EXPECT_EQ(back, icon);
        EXPECT_FALSE(reader.IsFailed());
        EXPECT_EQ(g_made.width, 2);
        EXPECT_EQ(g_made.color, SmallIcon().color);
        EXPECT_EQ(g_made.mask, SmallIcon().mask);
    }
}

TEST(StreamIcons, AnImageSizeThatDisagreesWithTheSidesIsRefused) {
    const FakeIcons fake;
    const auto header = InfoHeader(2, 32, 15, 0, 64);
    MemoryStream reader;
    Load(reader, std::string(header.begin(), header.end()), FM_BINARY);
    HICON icon = reinterpret_cast<HICON>(&g_handle);
    reader >> icon;
    EXPECT_EQ(icon, nullptr);
    EXPECT_TRUE(reader.IsFailed());
}

TEST(StreamIcons, IconSidesUpTo256AreRead) {
    const FakeIcons fake;
    for (int width : {256, 257}) {
        SCOPED_TRACE(width);
        g_source.width = width;
        g_source.height = 1;
        g_source.color.assign(static_cast<std::size_t>(width) * 4, 7);
        g_source.mask.assign((static_cast<std::size_t>(width) + 31) / 32 * 4, 0);
        MemoryStream writer;
        Store(writer, true);
        writer << reinterpret_cast<HICON>(&g_handle);
        MemoryStream reader;
        LoadBack(reader, writer);
        HICON back = nullptr;
        reader >> back;
        EXPECT_EQ(back != nullptr, width == 256);
        EXPECT_EQ(reader.IsFailed(), width != 256);
    }
    g_source = SmallIcon();
}

TEST(StreamIcons, SystemIconsRoundTripWhereIconsExist) {
    // Where the system has icons, one made from pixels goes through a stream and back;
    // elsewhere writing and reading report failure.
    void* made = Icons().imageToIcon(SmallIcon());
    MemoryStream writer;
    Store(writer, true);
    writer << static_cast<HICON>(made);
    if (made == nullptr) {
        EXPECT_TRUE(writer.IsFailed());
        EXPECT_EQ(writer.GetLength(), 0u);
        return;
    }
    EXPECT_FALSE(writer.IsFailed());
    MemoryStream reader;
    LoadBack(reader, writer);
    HICON back = nullptr;
    reader >> back;
    ASSERT_NE(back, nullptr);
    IconImage image;
    ASSERT_TRUE(Icons().iconToImage(back, image));
    EXPECT_EQ(image.width, 2);
    EXPECT_EQ(image.height, 2);
    EXPECT_EQ(image.mask, SmallIcon().mask);
    Icons().destroyIcon(back);
    Icons().destroyIcon(made);
}
