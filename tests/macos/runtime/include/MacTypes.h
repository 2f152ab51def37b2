#pragma once

#include <stdint.h>

/* Types from the time before the C library had such names. */
typedef unsigned char Boolean, Style, *StringPtr;
typedef const unsigned char *ConstStr255Param, *ConstStringPtr, *ConstStrFileNameParam;
typedef unsigned char Str255[256], Str63[64], Str32[33], Str31[32], Str15[16], StrFileName[64];
typedef char *Ptr, **Handle;
typedef uint8_t* BytePtr;
typedef void *LogicalAddress, *PRefCon, *URefCon, *SRefCon;
typedef const void* ConstLogicalAddress;
typedef signed char SignedByte;
typedef int32_t OSStatus, Fixed, Fract, Duration;
typedef int16_t OSErr, ScriptCode, LangCode, RegionCode, StyleField;
typedef uint32_t FourCharCode, OSType, ResType, UInt32, OptionBits, UnsignedFixed, UTF32Char;
typedef int32_t SInt32;
typedef uint16_t UniChar, UInt16;
typedef uint8_t UInt8, PBVersion;
typedef unsigned long ItemCount, ByteCount, ByteOffset, LogicalAddressSize, UniCharCount;
typedef long Size;
typedef long (*ProcPtr)(void);
typedef ProcPtr UniversalProcPtr;
struct Point {
    short v, h;
};
struct Rect {
    short top, left, bottom, right;
};
struct FixedPoint {
    Fixed x, y;
};
struct Float32Point {
    float x, y;
};
typedef struct UnsignedWide {
    uint32_t lo, hi;
} UnsignedWide, AbsoluteTime;
struct wide {
    uint32_t lo;
    int32_t hi;
};
struct ProcessSerialNumber {
    uint32_t highLongOfPSN, lowLongOfPSN;
};
struct NumVersion {
    uint8_t parts[4];
};
struct extended80 {
    int16_t exponent;
    uint16_t mantissa[4];
};
#define noErr 0
