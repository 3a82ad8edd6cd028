// Fields.cpp - the table of the fields the tool knows, and the typed read, write and check of
// every kind of value.

#include "Fields.h"

#include "Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cmath>
#include <type_traits>
#include <vector>

namespace fileio::tool {

namespace {

// The fields the tool knows, by label word: the kind of value each carries, and whether it
// names a file. The file-naming fields are the vocabulary's words for a file, an image or a
// sound that the project refers to, and the linked files of shortcuts. Left out on purpose:
// words that name a setting of a kind of map rather than a file (ShadowMap, PhotonMap),
// names of things inside the project (DefaultModel, ShortcutTo) and files the suite writes
// rather than reads (OutputName).
constexpr FieldRule kFields[] = {
    // flags
    {"Active", Kind::Bool, false},
    {"Selected", Kind::Bool, false},
    {"Visible", Kind::Bool, false},
    {"Locked", Kind::Bool, false},
    {"Mute", Kind::Bool, false},
    {"CastShadows", Kind::Bool, false},
    {"ReceiveShadows", Kind::Bool, false},
    // whole numbers
    {"Type", Kind::Int, false},
    {"Mode", Kind::Int, false},
    {"PatchesHit", Kind::Int, false},
    {"XRes", Kind::Int, false},
    {"YRes", Kind::Int, false},
    {"RandomSeed", Kind::Int, false},
    {"StartFrame", Kind::Int, false},
    {"EndFrame", Kind::Int, false},
    // numbers
    {"Version", Kind::Float, false},
    {"Angle", Kind::Float, false},
    {"Alpha", Kind::Float, false},
    {"Opacity", Kind::Float, false},
    {"Volume", Kind::Float, false},
    {"Intensity", Kind::Float, false},
    {"FocalLength", Kind::Float, false},
    {"ConeAngle", Kind::Float, false},
    {"Transparency", Kind::Float, false},
    {"Reflectivity", Kind::Float, false},
    {"Roughness", Kind::Float, false},
    {"Speed", Kind::Float, false},
    {"Value", Kind::Double, false},
    // texts
    {"Name", Kind::Text, false},
    {"Notes", Kind::Text, false},
    {"Description", Kind::Text, false},
    {"Title", Kind::Text, false},
    {"Url", Kind::Text, false},
    {"Organization", Kind::Text, false},
    {"ProjectName", Kind::Text, false},
    {"ProductVersion", Kind::Text, false},
    // composites
    {"Position", Kind::Vector, false},
    {"Scale", Kind::Vector, false},
    {"Translate", Kind::Vector, false},
    {"Rotate", Kind::Quaternion, false},
    {"Color", Kind::Color, false},
    {"SpecularColor", Kind::Color, false},
    {"Matrix", Kind::Matrix, false},
    {"Time", Kind::Time, false},
    {"StartTime", Kind::Time, false},
    {"Range", Kind::Range, false},
    {"PlayRange", Kind::Range, false},
    // file references
    {"FileName", Kind::Text, true},
    {"MatchName", Kind::Text, true},
    {"Image", Kind::Text, true},
    {"BumpMap", Kind::Text, true},
    {"LegacyBumpMap", Kind::Text, true},
    {"EnvironmentMap", Kind::Text, true},
    {"ReferenceMap", Kind::Text, true},
    {"FrontProjectionMap", Kind::Text, true},
    {"ShortcutToLinkedFogImage", Kind::Text, true},
    {"PosePreviewPath", Kind::Text, true},
    {"Sound", Kind::Text, true},
    {"LinkedSound", Kind::Text, true},
    {"LinkedModel", Kind::Text, true},
    {"LinkedAction", Kind::Text, true},
    {"LinkedChor", Kind::Text, true},
    {"LinkedMaterial", Kind::Text, true},
    {"LinkedLight", Kind::Text, true},
    {"LinkedCamera", Kind::Text, true},
    {"LinkedClip", Kind::Text, true},
    {"LinkedComposite", Kind::Text, true},
    {"LinkedDistort", Kind::Text, true},
    {"LinkedDopeSheet", Kind::Text, true},
    {"LinkedPost", Kind::Text, true},
    {"ParticleBakedFileName", Kind::Text, true},
    {"ParticleBakedIdxName", Kind::Text, true},
};

/// What each kind is, in the order of Kind.
struct KindFacts {
    const char* name;
    /// Words in the text form (a text: one).
    int words;
    /// Its words are decimal numbers (floats or doubles).
    bool decimal;
};

constexpr KindFacts kKinds[] = {
    {"bool", 1, false},   {"int", 1, false},   {"float", 1, true},      {"double", 1, true},
    {"text", 1, false},   {"vector", 3, true}, {"quaternion", 4, true}, {"color", 3, true},
    {"matrix", 16, true}, {"time", 1, false},  {"range", 2, false},
};
static_assert(std::size(kKinds) == std::variant_size_v<Value>);

const KindFacts& FactsOf(Kind kind) {
    return kKinds[static_cast<std::size_t>(kind)];
}

// ---- the words of a text value ---------------------------------------------------------------

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

bool IsLineEnd(char c) {
    return c == '\n' || c == '\r';
}

/// Splits the value at the start of `text` at spaces and tabs, up to its line end, and
/// tells where it lies; returns how many words it has.
template <class Visit> int ForEachWord(std::string_view text, ValueExtent& extent, Visit visit) {
    int count = 0;
    std::size_t i = 0;
    extent.end = 0;
    for (;;) {
        while (i < text.size() && IsBlank(text[i]))
            ++i;
        if (i == text.size() || IsLineEnd(text[i]))
            break;
        const std::size_t start = i;
        while (i < text.size() && !IsBlank(text[i]) && !IsLineEnd(text[i]))
            ++i;
        visit(text.substr(start, i - start));
        extent.end = i;
        ++count;
    }
    extent.lineEnd = i;
    return count;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// The words the C runtime reads as an infinity or a NaN (after an optional sign), as the
/// library's number texts spell them: "inf", "infinity", "nan", "nan(ind)", "nan(snan)".
bool IsSpecialNumber(std::string_view word) {
    if (!word.empty() && (word[0] == '-' || word[0] == '+'))
        word.remove_prefix(1);
    if (EqualsIgnoringCase(word, "inf") || EqualsIgnoringCase(word, "infinity") ||
        EqualsIgnoringCase(word, "nan"))
        return true;
    return word.size() > 5 && EqualsIgnoringCase(word.substr(0, 4), "nan(") && word.back() == ')';
}

// What is wrong with a word; each checker returns one of these, or null for a good word.
constexpr const char* kNotANumber = "is not a number";
constexpr const char* kNotAWholeNumber = "is not a whole number";
constexpr const char* kOutOfRange = "is out of range";
constexpr const char* kNotABool = "is not TRUE or FALSE";
constexpr const char* kNotATime = "is not a time";
/// Of a text value: the suite's reader would take the next word of the file in its place.
constexpr const char* kTextFormCannotCarry =
    "the text form cannot carry an empty text or one with white space";

/// A whole number as a 32-bit strtol reads it whole, within its range.
const char* CheckInt(std::string_view word) {
    const bool negative = word[0] == '-';
    const std::size_t first = negative || word[0] == '+' ? 1 : 0;
    // The magnitude of the most negative value, one past the largest.
    constexpr long long kLimit = static_cast<long long>(INT_MAX) + 1;
    long long value = 0;
    std::size_t i = first;
    for (; i < word.size() && IsDigit(word[i]); ++i) {
        value = value * 10 + (word[i] - '0');
        if (value > kLimit)
            return kOutOfRange;
    }
    if (i == first || i != word.size())
        return kNotAWholeNumber;
    return value == kLimit && !negative ? kOutOfRange : nullptr;
}

const char* CheckBool(std::string_view word) {
    for (const char* known : {"TRUE", "FALSE", "ON", "OFF", "1", "0"}) {
        if (EqualsIgnoringCase(word, known))
            return nullptr;
    }
    return kNotABool;
}

/// A time as the text form writes it: "-"? digits (":" digits){0,2} ("." digits)?.
const char* CheckTime(std::string_view word) {
    std::string_view rest = word;
    if (rest[0] == '-')
        rest.remove_prefix(1);
    int colons = 0;
    bool point = false;
    bool digitSeen = false;
    for (char c : rest) {
        if (IsDigit(c)) {
            digitSeen = true;
            continue;
        }
        const bool separator = (c == ':' && !point && ++colons <= 2) || (c == '.' && !point);
        if (!separator || !digitSeen)
            return kNotATime;
        point = point || c == '.';
        digitSeen = false;
    }
    return digitSeen ? nullptr : kNotATime;
}

const char* CheckWord(Kind kind, std::string_view word) {
    switch (kind) {
    case Kind::Bool:
        return CheckBool(word);
    case Kind::Int:
        return CheckInt(word);
    case Kind::Time:
    case Kind::Range:
        return CheckTime(word);
    default:
        return nullptr;
    }
}

// ---- decimal values in one pass ---------------------------------------------------------------
// The values of the number kinds are most of a project's text, so their words are split and
// checked in one pass by a small automaton over character classes: sign? digits ("."
// digits)? (e sign? digits)?, at least one digit before the exponent. A word it does not
// accept is looked at again for the spellings of an infinity or a NaN.

enum CharClass : unsigned char { kOther, kDigit, kSign, kPoint, kExponent, kBlank, kLineEnd };
constexpr int kClassCount = 7;

constexpr auto kCharClasses = [] {
    std::array<unsigned char, 256> classes{};
    for (int c = '0'; c <= '9'; ++c)
        classes[c] = kDigit;
    classes['+'] = classes['-'] = kSign;
    classes['.'] = kPoint;
    classes['e'] = classes['E'] = kExponent;
    classes[' '] = classes['\t'] = kBlank;
    classes['\n'] = classes['\r'] = kLineEnd;
    return classes;
}();

// The automaton's states. kBetween is between words; kRejected reads on to the word's end.
enum DecimalState : unsigned char {
    kBetween,
    kSigned,
    kWhole,
    kBarePoint,
    kFraction,
    kExponentMark,
    kExponentSign,
    kExponentDigits,
    kRejected,
    kStateCount
};

/// The next state for each state and class; a blank or line end ends a word, and is
/// handled apart.
constexpr auto kDecimalMoves = [] {
    std::array<std::array<unsigned char, kClassCount>, kStateCount> moves{};
    for (auto& row : moves)
        row.fill(kRejected);
    moves[kBetween][kDigit] = kWhole;
    moves[kBetween][kSign] = kSigned;
    moves[kBetween][kPoint] = kBarePoint;
    moves[kSigned][kDigit] = kWhole;
    moves[kSigned][kPoint] = kBarePoint;
    moves[kWhole][kDigit] = kWhole;
    moves[kWhole][kPoint] = kFraction;
    moves[kWhole][kExponent] = kExponentMark;
    moves[kBarePoint][kDigit] = kFraction;
    moves[kFraction][kDigit] = kFraction;
    moves[kFraction][kExponent] = kExponentMark;
    moves[kExponentMark][kDigit] = kExponentDigits;
    moves[kExponentMark][kSign] = kExponentSign;
    moves[kExponentSign][kDigit] = kExponentDigits;
    moves[kExponentDigits][kDigit] = kExponentDigits;
    return moves;
}();

bool IsAccepting(unsigned char state) {
    return state == kWhole || state == kFraction || state == kExponentDigits;
}

/// ForEachWord and CheckDecimal in one pass: the words of a number value, up to its line
/// end. Returns how many there are; `badWord` gets the first that is not a number.
int CheckDecimalWords(std::string_view text, ValueExtent& extent, std::string_view& badWord) {
    int count = 0;
    unsigned char state = kBetween;
    std::size_t start = 0;
    extent.end = 0;
    std::size_t i = 0;
    for (; i < text.size(); ++i) {
        const unsigned char type = kCharClasses[static_cast<unsigned char>(text[i])];
        if (type != kBlank && type != kLineEnd) {
            if (state == kBetween)
                start = i;
            state = kDecimalMoves[state][type];
            continue;
        }
        if (state != kBetween) {
            const std::string_view word = text.substr(start, i - start);
            if (!IsAccepting(state) && badWord.empty() && !IsSpecialNumber(word))
                badWord = word;
            extent.end = i;
            ++count;
            state = kBetween;
        }
        if (type == kLineEnd)
            break;
    }
    if (state != kBetween) {
        const std::string_view word = text.substr(start, i - start);
        if (!IsAccepting(state) && badWord.empty() && !IsSpecialNumber(word))
            badWord = word;
        extent.end = i;
        ++count;
    }
    extent.lineEnd = i;
    return count;
}

std::string WordProblem(std::string_view word, const char* problem) {
    return Concat({"'", word, "' ", problem});
}

/// The text form's bytes of a value, written by the library's writer.
std::string WrittenText(const Value& value) {
    MemoryStream text;
    text.Open(FM_STORING);
    WriteValue(text, value);
    return std::string(reinterpret_cast<const char*>(text.GetData()), text.GetLength());
}

/// Reads a T into the value, in place.
template <class T> void ReadInto(VarnStream& in, Value& value) {
    in >> value.emplace<T>();
}

} // namespace

const std::vector<const FieldRule*>& FieldsById() {
    static const std::vector<const FieldRule*> byId = [] {
        std::vector<const FieldRule*> index;
        for (const FieldRule& rule : kFields) {
            const int id = GetLabelIDFromText(rule.word);
            if (id < 0)
                continue;
            if (static_cast<std::size_t>(id) >= index.size())
                index.resize(static_cast<std::size_t>(id) + 1, nullptr);
            index[static_cast<std::size_t>(id)] = &rule;
        }
        return index;
    }();
    return byId;
}

std::span<const FieldRule> KnownFields() {
    return kFields;
}

const char* KindName(Kind kind) {
    return FactsOf(kind).name;
}

ValueExtent MeasureValue(std::string_view text) {
    ValueExtent extent;
    ForEachWord(text, extent, [](std::string_view) {});
    return extent;
}

std::string CheckValueText(Kind kind, std::string_view text, ValueExtent& extent) {
    const int expected = FactsOf(kind).words;
    std::string_view badWord;
    const char* problem = nullptr;
    int words = 0;
    if (FactsOf(kind).decimal) {
        words = CheckDecimalWords(text, extent, badWord);
        problem = badWord.empty() ? nullptr : kNotANumber;
    } else {
        words = ForEachWord(text, extent, [&](std::string_view word) {
            if (problem == nullptr && (problem = CheckWord(kind, word)) != nullptr)
                badWord = word;
        });
    }
    if (kind == Kind::Text && words != 1)
        return kTextFormCannotCarry;
    if (words < expected)
        return std::to_string(words) + " of " + std::to_string(expected) + " values";
    if (words > expected)
        return std::to_string(words) + " values, " + std::to_string(expected) + " expected";
    return problem != nullptr ? WordProblem(badWord, problem) : std::string();
}

std::string CheckValueRange(const Value& value, std::string_view text) {
    const auto outOfRange = [&]<class T>(const T* numbers, std::size_t count) -> std::string {
        if (std::all_of(numbers, numbers + count, [](T n) { return std::isfinite(n); }))
            return {};
        std::string problem;
        ValueExtent extent;
        ForEachWord(text, extent, [&](std::string_view word) {
            T number{};
            if (problem.empty() && !IsSpecialNumber(word) &&
                std::from_chars(word.data(), word.data() + word.size(), number).ec ==
                    std::errc::result_out_of_range)
                problem = WordProblem(word, kOutOfRange);
        });
        return problem;
    };
    return std::visit(
        [&](const auto& v) -> std::string {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, double> || std::is_same_v<T, float>)
                return outOfRange(&v, 1);
            else if constexpr (std::is_same_v<T, ::Vector> || std::is_same_v<T, ::Quaternion> ||
                               std::is_same_v<T, RGBFloat> || std::is_same_v<T, Matrix44>)
                return outOfRange(reinterpret_cast<const float*>(&v), sizeof v / sizeof(float));
            else
                return {};
        },
        value);
}

std::string CheckTextFormCarries(const Value& value) {
    const ::String* text = std::get_if<::String>(&value);
    if (text == nullptr)
        return {};
    const std::string_view view = text->View();
    if (view.empty() || view.find_first_of(" \t\r\n") != std::string_view::npos)
        return kTextFormCannotCarry;
    return {};
}

void ReadValue(VarnStream& in, Kind kind, Value& value) {
    switch (kind) {
    case Kind::Bool:
        return ReadInto<bool>(in, value);
    case Kind::Int:
        return ReadInto<int>(in, value);
    case Kind::Float:
        return ReadInto<float>(in, value);
    case Kind::Double:
        return ReadInto<double>(in, value);
    case Kind::Text:
        return ReadInto<::String>(in, value);
    case Kind::Vector:
        return ReadInto<::Vector>(in, value);
    case Kind::Quaternion:
        return ReadInto<::Quaternion>(in, value);
    case Kind::Color:
        return ReadInto<RGBFloat>(in, value);
    case Kind::Matrix:
        return ReadInto<Matrix44>(in, value);
    case Kind::Time:
        return ReadInto<::Time>(in, value);
    case Kind::Range:
        return ReadInto<TimeRange>(in, value);
    }
}

void WriteValue(VarnStream& out, const Value& value) {
    std::visit([&](const auto& v) { out << v; }, value);
}

std::string ValueText(const Value& value) {
    if (const ::String* text = std::get_if<::String>(&value))
        return std::string(text->View());
    return WrittenText(value);
}

} // namespace fileio::tool
