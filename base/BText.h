// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"
#include "base/BArray.h"
#include "base/BString.h"

#include <cstdint>

/// A fresh random (version 4) identifier, as in "1b4e28ba-2fa1-4d2c-883f-0016d3cca427".
FENWICK_EXPORT BString MakeUuidString();

/// A whole number in groups of three digits, for people: 1234567 is "1 234 567".
FENWICK_EXPORT BString GroupedDigits(std::int64_t number);

/// Decodes UTF-8 into code points. Illegal bytes (truncated, overlong, surrogate, beyond U+10FFFF) end the conversion.
/// @param out replaced by the code points decoded before the end or the first illegal sequence
/// @return number of code points, or -1 when an illegal sequence was met or memory ran out
FENWICK_EXPORT std::int64_t ConvertUTF8toUTF32(const char* utf8, std::int64_t bytes, BArray<std::uint32_t>& out);
