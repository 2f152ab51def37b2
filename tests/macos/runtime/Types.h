#pragma once

#include "tests/macos/runtime/Runtime.h"

#include <string>
#include <vector>

// The type codes of the facts (see tools/macos/rookmac/fakedata.py) and how their values lie in registers.
namespace rb::fake {

struct TypeCode {
    char kind = 'v';      // first letter of the code
    std::string detail;   // class, opaque type or struct name
    std::string fields;   // of a struct, one letter each
    bool nonnull = false; // of an object

    bool isObject() const { return kind == '@' || kind == '&' || kind == '='; }
    bool isVector() const { return kind == 'd' || kind == 'f'; }
    bool isSigned() const { return kind == 'c' || kind == 's' || kind == 'i' || kind == 'q'; }
    std::size_t size() const; // in bytes, as a value
    bool inMemory() const { return kind == '{' && size() > 16; }
};

// Result first, then the arguments. Kept for the whole run under the text's address.
const std::vector<TypeCode>& parseSignature(const char* text);

// One value: the bytes of a scalar (sign- or zero-extended to eight) or of a whole struct.
struct Value {
    TypeCode type;
    std::vector<unsigned char> bytes;

    long integer() const;
    double real() const;
    objc::Object* object() const { return reinterpret_cast<objc::Object*>(integer()); }
};

// The arguments of a call; `integersUsed` registers are taken already (self, _cmd, hidden result).
std::vector<Value> readArguments(const objc::Frame& frame, const std::vector<TypeCode>& signature,
                                 std::size_t integersUsed);
// Puts a result where the caller expects it; the bytes may be fewer than the type's.
void writeResult(objc::Frame& frame, const TypeCode& type, const void* bytes, std::size_t size);

// As a person would write it: @"text", {{0, 0}, {4, 3}}, YES, <NSMenu>.
std::string describe(const Value& value);
std::string describeObject(objc::Object* object);

} // namespace rb::fake
