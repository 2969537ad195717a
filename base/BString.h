// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include "FenwickExport.h"

#include <cstdint>
#include <string>
#include <string_view>

#if defined(__GNUC__)
#define FENWICK_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define FENWICK_PRINTF(text, first)
#endif

/// Text as UTF-8 bytes. Comparisons and positions are bytewise; null pointers read as the empty text.
class FENWICK_EXPORT BString
{
public:
    BString() = default;
    BString(const char* text) : mText(text ? text : "") {} // NOLINT: conversion from literals is wanted
    BString(std::string_view text) : mText(text) {}        // NOLINT
    BString(std::string text) : mText(std::move(text)) {}  // NOLINT

    /// Text made by printf rules.
    static BString Format(const char* format, ...) FENWICK_PRINTF(1, 2);

    // --- Reading
    const char* CString() const { return mText.c_str(); }
    const std::string& Std() const { return mText; }
    operator std::string_view() const { return mText; }                // NOLINT
    std::int64_t Length() const { return std::int64_t(mText.size()); } ///< bytes
    bool IsEmpty() const { return mText.empty(); }
    char operator[](std::int64_t i) const { return mText[std::size_t(i)]; }

    /// @param flag 0: ASCII letters are equal whatever their case; otherwise bytes are compared
    bool IsSameAs(std::string_view other, int flag = 1) const;
    bool IsInteger() const; ///< one or more ASCII digits and nothing else
    bool StartsWith(std::string_view head) const { return mText.starts_with(head); }
    bool EndsWith(std::string_view tail) const { return mText.ends_with(tail); }
    std::int64_t Find(std::string_view what, std::int64_t from = 0) const; ///< position of the first match, -1 for none
    std::int64_t FindLast(std::string_view what) const;                    ///< position of the last match, -1 for none
    BString Mid(std::int64_t from, std::int64_t count = INT64_MAX) const;  ///< clamped to the text
    BString Left(std::int64_t count) const { return Mid(0, count); }
    BString Lower() const;   ///< ASCII letters only
    BString Trimmed() const; ///< without ASCII white space at both ends

    // --- Changing
    BString& operator+=(std::string_view tail)
    {
        mText += tail;
        return *this;
    }
    BString& Append(std::string_view tail) { return *this += tail; }
    void ReplaceAll(std::string_view what, std::string_view with); ///< left to right, without looking at what it wrote
    void Empty() { mText.clear(); }

    friend BString operator+(const BString& a, const BString& b) { return BString(a.mText + b.mText); }
    friend BString operator+(const BString& a, const char* b) { return BString(a.mText + (b ? b : "")); }
    friend BString operator+(const char* a, const BString& b) { return BString((a ? a : "") + b.mText); }
    friend bool operator==(const BString& a, const BString& b) { return a.mText == b.mText; }
    friend bool operator==(const BString& a, const char* b) { return a.mText == (b ? b : ""); }
    friend auto operator<=>(const BString& a, const BString& b) { return a.mText <=> b.mText; }

private:
    std::string mText;
};
