// number_reading.cpp - libFuzzer target: for any token, the library's number readers give
// what the C runtime's conversions give in the "C" locale, bit for bit (NaN payloads
// included):
//   - the float and double readers (Str_atof, Str_atod, the text streams) against strtof
//     and strtod;
//   - the 64-bit integer readers against strtoll and strtoull;
//   - the 32-bit readers against what a runtime with a 32-bit long gives, as the file format
//     reads them on every platform: strtol clamps to the 32-bit range, and strtoul clamps a
//     magnitude above 2^32 - 1 and otherwise negates modulo 2^32. Both are taken from the
//     64-bit runtime results.
// The token is the input up to its first NUL, as the runtime sees it. One spelling reads
// differently on purpose: "nan(snan)" is the library's own text for a signalling NaN and
// reads back as one, where glibc reads a quiet NaN; for it only the kind is checked.
//
// Runs on glibc: its conversions are the reference the library follows.

#include "FuzzSupport.h"
#include "core/StringNumbers.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cerrno>
#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

namespace {

using fuzz::Require;

/// True when the token spells the library's signalling NaN: white space, a sign, then
/// "nan(snan)" in any case.
bool SpellsSignallingNaN(std::string_view token) {
    std::size_t i = token.find_first_not_of(" \t\n\v\f\r");
    if (i != std::string_view::npos && (token[i] == '+' || token[i] == '-'))
        ++i;
    std::string spelling(token.substr(std::min(i, token.size()), 9));
    for (char& c : spelling)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return spelling == "nan(snan)";
}

template <class Float> void CheckReal(Float library, Float runtime, bool signalling) {
    using Word = std::conditional_t<sizeof(Float) == 8, std::uint64_t, std::uint32_t>;
    constexpr Word kQuiet = Word{1} << (std::numeric_limits<Float>::digits - 2);
    constexpr Word kBelowQuiet = kQuiet >> 1;
    const auto bits = std::bit_cast<Word>(library);
    const auto expected = std::bit_cast<Word>(runtime);
    if (!signalling) {
        Require(bits == expected);
        return;
    }
    // The runtime's quiet NaN of the same sign, with the quiet bit cleared and the bit
    // below it set.
    Require(bits == ((expected & ~kQuiet) | kBelowQuiet));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool cLocale = std::setlocale(LC_ALL, "C") != nullptr;
    Require(cLocale);
    const std::string token(reinterpret_cast<const char*>(data),
                            strnlen(reinterpret_cast<const char*>(data), size));
    const std::string_view view(token);
    const char* text = token.c_str();
    const bool signalling = SpellsSignallingNaN(view);

    CheckReal(fileio::detail::ParseDouble(view), std::strtod(text, nullptr), signalling);
    CheckReal(fileio::detail::ParseFloat(view), std::strtof(text, nullptr), signalling);

    const long long wide = std::strtoll(text, nullptr, 10);
    Require(fileio::detail::ParseSigned(view, INT64_MIN, INT64_MAX) == wide);
    Require(fileio::detail::ParseSigned(view, INT32_MIN, INT32_MAX) ==
            std::clamp<long long>(wide, INT32_MIN, INT32_MAX));

    errno = 0;
    char* end = nullptr;
    const unsigned long long unsignedWide = std::strtoull(text, &end, 10);
    const bool overflow = errno == ERANGE;
    Require(fileio::detail::ParseUnsigned(view, UINT64_MAX) == unsignedWide);
    const std::size_t first = view.find_first_not_of(" \t\n\v\f\r");
    const bool negative = end != text && first != std::string_view::npos && view[first] == '-';
    const unsigned long long magnitude = negative ? 0ULL - unsignedWide : unsignedWide;
    const unsigned long long expected32 =
        overflow || magnitude > UINT32_MAX ? UINT32_MAX : unsignedWide & UINT32_MAX;
    Require(fileio::detail::ParseUnsigned(view, UINT32_MAX) == expected32);
    return 0;
}
