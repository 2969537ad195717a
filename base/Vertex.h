// FenwickBase: foundation of the VelmarBase project.
#pragma once

#include <cmath>

/// A point, direction or colour of three 32-bit floats.
struct VERTEX
{
    float x = 0, y = 0, z = 0;

    friend constexpr VERTEX operator+(const VERTEX& a, const VERTEX& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
    friend constexpr VERTEX operator-(const VERTEX& a, const VERTEX& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
    friend constexpr VERTEX operator-(const VERTEX& a) { return {-a.x, -a.y, -a.z}; }
    friend constexpr VERTEX operator*(const VERTEX& a, float s) { return {a.x * s, a.y * s, a.z * s}; }
    friend constexpr VERTEX operator*(float s, const VERTEX& a) { return a * s; }
    constexpr VERTEX& operator+=(const VERTEX& b) { return *this = *this + b; }
    constexpr VERTEX& operator-=(const VERTEX& b) { return *this = *this - b; }
    constexpr VERTEX& operator*=(float s) { return *this = *this * s; }
    friend constexpr bool operator==(const VERTEX&, const VERTEX&) = default;
};

/// A local frame: a normal and two axes across it.
struct BASIS3D
{
    VERTEX n, u, w;
};

/// A texture coordinate: two 32-bit floats.
struct T_VERTEX
{
    float u = 0, v = 0;

    friend constexpr bool operator==(const T_VERTEX&, const T_VERTEX&) = default;
};

static_assert(sizeof(VERTEX) == 12 && sizeof(T_VERTEX) == 8, "arrays of both go to files and to OpenGL as they are");

constexpr float Dot(const VERTEX& a, const VERTEX& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
constexpr VERTEX Cross(const VERTEX& a, const VERTEX& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float Length(const VERTEX& a) { return std::sqrt(Dot(a, a)); }
inline bool IsFinite(const VERTEX& a) { return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z); }
