#include "tests/macos/runtime/Types.h"

#include <cstdio>
#include <cstring>
#include <sstream>
#include <unordered_map>

namespace rb::fake {
namespace {

std::size_t letterSize(char letter) {
    switch (letter) {
    case 'B':
    case 'c':
    case 'C':
        return 1;
    case 's':
    case 'S':
        return 2;
    case 'i':
    case 'I':
    case 'f':
        return 4;
    default:
        return 8;
    }
}

struct Field {
    char letter;
    std::size_t offset;
};

std::vector<Field> layOut(const std::string& letters, std::size_t& total) {
    std::vector<Field> fields;
    std::size_t offset = 0;
    std::size_t alignment = 1;
    for (const char letter : letters) {
        const std::size_t size = letterSize(letter);
        alignment = std::max(alignment, size);
        offset = (offset + size - 1) / size * size;
        fields.push_back({letter, offset});
        offset += size;
    }
    total = (offset + alignment - 1) / alignment * alignment;
    return fields;
}

// Whether the eight bytes at `word` of a small struct travel in a vector register.
bool wordIsVector(const TypeCode& type, std::size_t word) {
    std::size_t total = 0;
    for (const Field& field : layOut(type.fields, total))
        if (field.offset / 8 == word && field.letter != 'd' && field.letter != 'f')
            return false;
    return true;
}

TypeCode parseCode(std::string code) {
    TypeCode type;
    if (code.back() == '!') {
        type.nonnull = true;
        code.pop_back();
    }
    type.kind = code.front();
    if (type.kind == '{') {
        const std::size_t equals = code.find('=');
        type.detail = code.substr(1, equals - 1);
        type.fields = code.substr(equals + 1, code.size() - equals - 2);
    } else {
        type.detail = code.substr(1);
    }
    return type;
}

std::string number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

// Reads a scalar of the given letter.
double fieldValue(const unsigned char* bytes, char letter) {
    Value value{{letter, {}, {}, false}, std::vector<unsigned char>(bytes, bytes + letterSize(letter))};
    return letter == 'd' || letter == 'f' ? value.real() : static_cast<double>(value.integer());
}

std::string describeStruct(const Value& value) {
    std::size_t total = 0;
    std::vector<std::string> parts;
    for (const Field& field : layOut(value.type.fields, total))
        parts.push_back(number(fieldValue(value.bytes.data() + field.offset, field.letter)));
    if (value.type.detail == "CGRect")
        return "{{" + parts[0] + ", " + parts[1] + "}, {" + parts[2] + ", " + parts[3] + "}}";
    std::string text = "{";
    for (const std::string& part : parts)
        text += (text.size() > 1 ? ", " : "") + part;
    return text + "}";
}

} // namespace

std::size_t TypeCode::size() const {
    if (kind != '{')
        return letterSize(kind);
    std::size_t total = 0;
    layOut(fields, total);
    return total;
}

const std::vector<TypeCode>& parseSignature(const char* text) {
    static auto* parsed = new std::unordered_map<const char*, std::vector<TypeCode>>;
    auto [entry, isNew] = parsed->try_emplace(text);
    if (isNew) {
        std::istringstream codes(text);
        std::string code;
        while (codes >> code)
            entry->second.push_back(parseCode(code));
    }
    return entry->second;
}

long Value::integer() const {
    unsigned long bits = 0;
    std::memcpy(&bits, bytes.data(), std::min(bytes.size(), sizeof bits));
    const std::size_t width = letterSize(type.kind) * 8;
    if (width == 64)
        return static_cast<long>(bits);
    bits &= (1UL << width) - 1;
    const unsigned long sign = 1UL << (width - 1);
    if (type.isSigned() && (bits & sign))
        bits |= ~((1UL << width) - 1);
    return static_cast<long>(bits);
}

double Value::real() const {
    if (type.kind == 'f') {
        float value = 0;
        std::memcpy(&value, bytes.data(), sizeof value);
        return static_cast<double>(value);
    }
    double value = 0;
    std::memcpy(&value, bytes.data(), std::min(bytes.size(), sizeof value));
    return value;
}

std::vector<Value> readArguments(const objc::Frame& frame, const std::vector<TypeCode>& signature,
                                 std::size_t integersUsed) {
    std::size_t vectorsUsed = 0;
    std::size_t stackUsed = 0;
    std::vector<Value> values;
    for (std::size_t i = 1; i < signature.size(); ++i) {
        const TypeCode& type = signature[i];
        Value value{type, {}};
        const std::size_t words = (type.size() + 7) / 8;
        value.bytes.resize(words * 8);
        std::size_t vectors = 0;
        for (std::size_t word = 0; word < words; ++word)
            vectors += type.kind == '{' ? wordIsVector(type, word) : type.isVector();
        const std::size_t integers = words - vectors;
        const bool fits = vectorsUsed + vectors <= 8 && integersUsed + integers <= 6;
        for (std::size_t word = 0; word < words; ++word) {
            const void* source = nullptr;
            if (type.inMemory() || !fits)
                source = &frame.stack[stackUsed++];
            else if (type.kind == '{' ? wordIsVector(type, word) : type.isVector())
                source = frame.vectors[vectorsUsed++];
            else
                source = &frame.integers[integersUsed++];
            std::memcpy(value.bytes.data() + word * 8, source, 8);
        }
        values.push_back(std::move(value));
    }
    return values;
}

void writeResult(objc::Frame& frame, const TypeCode& type, const void* bytes, std::size_t size) {
    std::vector<unsigned char> padded((type.size() + 7) / 8 * 8);
    std::memcpy(padded.data(), bytes, std::min(size, padded.size()));
    if (type.inMemory()) {
        std::memcpy(reinterpret_cast<void*>(frame.integers[0]), padded.data(), type.size());
        frame.integerResults[0] = frame.integers[0];
        return;
    }
    std::size_t integers = 0;
    std::size_t vectors = 0;
    for (std::size_t word = 0; word * 8 < padded.size(); ++word) {
        const bool vector = type.kind == '{' ? wordIsVector(type, word) : type.isVector();
        void* target = vector ? static_cast<void*>(frame.vectorResults[vectors++])
                              : static_cast<void*>(&frame.integerResults[integers++]);
        std::memcpy(target, padded.data() + word * 8, 8);
    }
}

std::string describe(const Value& value) {
    const long integer = value.type.kind == '{' ? 0 : value.integer();
    switch (value.type.kind) {
    case '{':
        return describeStruct(value);
    case 'd':
    case 'f':
        return number(value.real());
    case 'B':
        return integer ? "YES" : "NO";
    case '@':
    case '&':
    case '=':
    case '#':
        return describeObject(value.object());
    case '?':
        return integer ? "^block" : "nil";
    case ':':
        return integer ? std::string("@selector(") + reinterpret_cast<const char*>(integer) + ")" : "NULL";
    case '*':
        return integer ? std::string("\"") + reinterpret_cast<const char*>(integer) + "\"" : "NULL";
    case '^':
        return integer ? "pointer" : "NULL";
    case 'Q':
        return std::to_string(static_cast<unsigned long>(integer));
    default:
        return std::to_string(integer);
    }
}

} // namespace rb::fake
