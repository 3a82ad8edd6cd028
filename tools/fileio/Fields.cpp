// Fields.cpp - the table of the fields the tool knows, and the typed read, write and check of
// every kind of value.

#include "Fields.h"

#include "Text.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <vector>

namespace fileio::tool {

namespace {

// The fields the tool knows, by label word: the kind of value each carries, and whether it
// names a file. The file-naming fields are the vocabulary's words for a file, an image or a
// sound that the project refers to, and the linked files of shortcuts. Left out on purpose:
// words that name a setting of a kind of map rather than a file (ShadowMap, PhotonMap),
// names of things inside the project (DefaultModel, ShortcutTo) and files the suite writes
// rather than reads (OutputName).
constexpr FieldSpec kFields[] = {
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
    /// Bytes in the binary form (a text: its count).
    unsigned binarySize;
    /// Words in the text form (a text: one).
    int words;
};

constexpr KindFacts kKinds[] = {
    {"bool", 1, 1},     {"int", 4, 1},     {"float", 4, 1},       {"double", 8, 1},
    {"text", 2, 1},     {"vector", 12, 3}, {"quaternion", 16, 4}, {"color", 12, 3},
    {"matrix", 64, 16}, {"time", 8, 1},    {"range", 16, 2},
};
static_assert(std::size(kKinds) == std::variant_size_v<Value>);

const KindFacts& FactsOf(Kind kind) {
    return kKinds[static_cast<std::size_t>(kind)];
}

/// The table indexed by label id, built on first use.
const std::vector<const FieldSpec*>& FieldsById() {
    static const std::vector<const FieldSpec*> byId = [] {
        std::vector<const FieldSpec*> index;
        for (const FieldSpec& spec : kFields) {
            const int id = GetLabelIDFromText(spec.word);
            if (id < 0)
                continue;
            if (static_cast<std::size_t>(id) >= index.size())
                index.resize(static_cast<std::size_t>(id) + 1, nullptr);
            index[static_cast<std::size_t>(id)] = &spec;
        }
        return index;
    }();
    return byId;
}

// ---- the words of a text value ---------------------------------------------------------------

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

/// Splits a value's text at spaces and tabs.
template <class Visit> int ForEachWord(std::string_view text, Visit visit) {
    int count = 0;
    std::size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && IsBlank(text[i]))
            ++i;
        if (i == text.size())
            break;
        const std::size_t start = i;
        while (i < text.size() && !IsBlank(text[i]))
            ++i;
        visit(text.substr(start, i - start));
        ++count;
    }
    return count;
}

std::string Quoted(std::string_view word) {
    return "'" + std::string(word) + "'";
}

/// The whole word as a number of type T; a leading "+" is taken as the C runtime takes it.
template <class T> std::string CheckNumber(std::string_view word, const char* what) {
    std::string_view digits = word;
    if (digits.size() > 1 && digits[0] == '+' && digits[1] != '-')
        digits.remove_prefix(1);
    T value{};
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc::result_out_of_range)
        return Quoted(word) + " is out of range";
    if (error != std::errc() || end != digits.data() + digits.size())
        return Quoted(word) + " is not " + what;
    return {};
}

std::string CheckInt(std::string_view word) {
    std::string problem = CheckNumber<long long>(word, "a whole number");
    if (!problem.empty())
        return problem;
    std::string_view digits = word[0] == '+' ? word.substr(1) : word;
    long long value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (value < INT_MIN || value > INT_MAX)
        return Quoted(word) + " is out of range";
    return {};
}

std::string CheckBool(std::string_view word) {
    for (const char* known : {"TRUE", "FALSE", "ON", "OFF", "1", "0"}) {
        if (EqualsIgnoringCase(word, known))
            return {};
    }
    return Quoted(word) + " is not TRUE or FALSE";
}

/// A time as the text form writes it: "-"? digits (":" digits){0,2} ("." digits)?.
std::string CheckTime(std::string_view word) {
    std::string_view rest = word;
    if (!rest.empty() && rest[0] == '-')
        rest.remove_prefix(1);
    int colons = 0;
    bool point = false;
    bool digitSeen = false;
    for (char c : rest) {
        if (c >= '0' && c <= '9') {
            digitSeen = true;
            continue;
        }
        const bool separator = (c == ':' && !point && ++colons <= 2) || (c == '.' && !point);
        if (!separator || !digitSeen)
            return Quoted(word) + " is not a time";
        point = point || c == '.';
        digitSeen = false;
    }
    if (!digitSeen)
        return Quoted(word) + " is not a time";
    return {};
}

std::string CheckWord(Kind kind, std::string_view word) {
    switch (kind) {
    case Kind::Bool:
        return CheckBool(word);
    case Kind::Int:
        return CheckInt(word);
    case Kind::Double:
        return CheckNumber<double>(word, "a number");
    case Kind::Time:
    case Kind::Range:
        return CheckTime(word);
    case Kind::Text:
        return {};
    default:
        return CheckNumber<float>(word, "a number");
    }
}

/// The text form's bytes of a value, written by the library's writer.
std::string WrittenText(const Value& value) {
    MemoryStream text;
    text.Open(FM_STORING);
    WriteValue(text, value);
    return std::string(reinterpret_cast<const char*>(text.GetData()), text.GetLength());
}

template <class T> Value ReadAs(VarnStream& in) {
    T value{};
    in >> value;
    return value;
}

} // namespace

const FieldSpec* FindField(int labelId) {
    const auto& byId = FieldsById();
    if (labelId < 0 || static_cast<std::size_t>(labelId) >= byId.size())
        return nullptr;
    return byId[static_cast<std::size_t>(labelId)];
}

std::span<const FieldSpec> KnownFields() {
    return kFields;
}

const char* KindName(Kind kind) {
    return FactsOf(kind).name;
}

unsigned BinarySize(Kind kind) {
    return FactsOf(kind).binarySize;
}

std::string CheckValueText(Kind kind, std::string_view text) {
    const int expected = FactsOf(kind).words;
    std::string problem;
    const int words = ForEachWord(text, [&](std::string_view word) {
        if (problem.empty())
            problem = CheckWord(kind, word);
    });
    if (kind == Kind::Text && words != 1)
        return "the text form cannot carry an empty text or one with white space";
    if (words < expected)
        return std::to_string(words) + " of " + std::to_string(expected) + " values";
    if (words > expected)
        return std::to_string(words) + " values, " + std::to_string(expected) + " expected";
    return problem;
}

std::string CheckTextFormCarries(const Value& value) {
    const ::String* text = std::get_if<::String>(&value);
    if (text == nullptr)
        return {};
    const std::string_view view = text->View();
    if (view.empty() || view.find_first_of(" \t\r\n") != std::string_view::npos)
        return "the text form cannot carry an empty text or one with white space";
    return {};
}

Value ReadValue(VarnStream& in, Kind kind) {
    switch (kind) {
    case Kind::Bool:
        return ReadAs<bool>(in);
    case Kind::Int:
        return ReadAs<int>(in);
    case Kind::Float:
        return ReadAs<float>(in);
    case Kind::Double:
        return ReadAs<double>(in);
    case Kind::Text:
        return ReadAs<::String>(in);
    case Kind::Vector:
        return ReadAs<::Vector>(in);
    case Kind::Quaternion:
        return ReadAs<::Quaternion>(in);
    case Kind::Color:
        return ReadAs<RGBFloat>(in);
    case Kind::Matrix:
        return ReadAs<Matrix44>(in);
    case Kind::Time:
        return ReadAs<::Time>(in);
    case Kind::Range:
        return ReadAs<TimeRange>(in);
    }
    return {};
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
