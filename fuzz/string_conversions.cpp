// string_conversions.cpp - libFuzzer target: arbitrary bytes through the number texts and
// every text operation of String (the number readers are number_reading's). Nothing may
// crash or read outside a buffer, and the properties that hold for every input are checked
// (a violation aborts, so the fuzzer reports it):
//   - a float or double made from the input's bytes reads back from its text to the same
//     value (NaNs to a NaN of the same sign and kind);
//   - ExpandXMLEscapes followed by ContractXMLEscapes gives the text back;
//   - GetAbbreviated never exceeds its limit; Tokenize always moves forward and ends.

#include "FuzzSupport.h"
#include "fileio/core/String.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

using fuzz::Require;

/// Reads a small integer from the front of the input, consuming up to two bytes.
int TakeInt(const std::uint8_t*& data, std::size_t& size) {
    int value = 0;
    for (int i = 0; i < 2 && size > 0; ++i, ++data, --size)
        value = value * 256 + *data;
    return value - 32768;
}

template <class Float, class Word> void CheckRoundTrip(const std::uint8_t* data, std::size_t size) {
    if (size < sizeof(Word))
        return;
    Word bits;
    std::memcpy(&bits, data, sizeof bits);
    const Float value = std::bit_cast<Float>(bits);
    const String text(value);
    Float back;
    if constexpr (sizeof(Float) == 8)
        back = text.Str_atod();
    else
        back = text.Str_atof();
    const Word backBits = std::bit_cast<Word>(back);
    // A NaN keeps its sign, exponent and quiet bit: the payload is not written.
    constexpr Word kKind = sizeof(Word) == 8 ? Word(0xFFF8000000000000) : Word(0xFFC00000);
    Require(backBits == bits || (value != value && (backBits & kKind) == (bits & kKind)));
    Require(String(value, static_cast<int>(bits % 40) - 2).IsNotEmpty());
}

void CheckTextOperations(const String& s, const String& other, int a, int b) {
    (void)s.Find(other, a);
    (void)s.Find(other.IsEmpty() ? 'x' : other[0], b);
    (void)s.ReverseFind(other, a);
    (void)s.ReverseFind(other.IsEmpty() ? 'x' : other[0], b);
    (void)s.Left(a);
    (void)s.Right(b);
    (void)s.Mid(a, b);
    (void)(s == other);
    (void)(s < other);
    (void)s.Compare(other, a > 0);

    int position = a;
    long long previous = -2;
    for (int steps = 0; steps <= s.GetLength_Int() + 1; ++steps) {
        (void)s.Tokenize(other, position);
        if (position < 0)
            break;
        Require(position > previous);
        previous = position;
    }
    Require(position < 0);

    String replaced(s);
    (void)replaced.Replace(other, String("#"));
    String removed(s);
    (void)removed.RemoveAll(other);

    String trimmed(s);
    trimmed.Trim();
    trimmed.TrimLeft(other);
    trimmed.TrimRight(other);
    trimmed.MakeUpper();
    trimmed.MakeLower();

    String escaped(s);
    escaped.ExpandXMLEscapes();
    escaped.ContractXMLEscapes();
    Require(escaped.View() == s.View());
    String contracted(s);
    contracted.ContractXMLEscapes();
    Require(contracted.GetLength() <= s.GetLength());

    const String abbreviated = s.GetAbbreviated(a % 300);
    Require(abbreviated.GetLength_Int() <= (a % 300 > 0 ? a % 300 : 0));

    (void)s.GetNumberSuffix();
    (void)s.GetWithoutNumberSuffix();
    (void)s.Quote();
    const std::vector<String> taken = {s, s.GetNextNumberedName(), other};
    const String free = s.GetNextFreeName(taken);
    for (const String& name : taken)
        Require(!(free == name));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Keeps the string pool's block alive between runs, so that a run does not pay for a
    // fresh block each time its last string goes.
    static const String resident("resident");
    CheckRoundTrip<double, std::uint64_t>(data, size);
    CheckRoundTrip<float, std::uint32_t>(data, size);

    const int a = TakeInt(data, size);
    const int b = TakeInt(data, size);
    const auto* text = reinterpret_cast<const char*>(data);
    // The input's two halves, for the operations that take a second string.
    const std::string_view all(text, size);
    const std::size_t cut = size / 2;
    const String first(std::string(all.substr(0, cut)));
    const String second(std::string(all.substr(cut)));

    CheckTextOperations(first, second, a, b);
    CheckTextOperations(second, first, b, a);
    return 0;
}
