// VelmarBase: materials.
#pragma once

/// A colour of four 32-bit floats: red, green, blue, and brightness, which scales the other three and is not alpha.
/// Arithmetic is component-wise on all four. Nothing is clamped.
class VXMaterialColor4
{
public:
    constexpr VXMaterialColor4() = default; ///< black of brightness 1
    constexpr VXMaterialColor4(float red, float green, float blue, float brightness)
        : mRed(red), mGreen(green), mBlue(blue), mBrightness(brightness)
    {
    }

    constexpr float Red() const { return mRed; }
    constexpr float Green() const { return mGreen; }
    constexpr float Blue() const { return mBlue; }
    constexpr float Brightness() const { return mBrightness; }
    constexpr float TotalRed() const { return mBrightness * mRed; }
    constexpr float TotalGreen() const { return mBrightness * mGreen; }
    constexpr float TotalBlue() const { return mBrightness * mBlue; }
    constexpr float HighestValue() const ///< of red, green and blue
    {
        if (mRed >= mGreen && mRed >= mBlue)
            return mRed;
        return mGreen >= mBlue ? mGreen : mBlue;
    }
    constexpr float MixedValue() const { return (mGreen + mRed + mBlue) / 3.0f; } ///< mean of red, green and blue

    constexpr void SetRed(float red) { mRed = red; }
    constexpr void SetGreen(float green) { mGreen = green; }
    constexpr void SetBlue(float blue) { mBlue = blue; }
    constexpr void SetBrightness(float brightness) { mBrightness = brightness; }
    constexpr void Set(float red, float green, float blue, float brightness)
    {
        *this = VXMaterialColor4(red, green, blue, brightness);
    }
    constexpr void SetColor(float red, float green, float blue, float brightness) { Set(red, green, blue, brightness); }

    constexpr VXMaterialColor4& operator*=(const VXMaterialColor4& c)
    {
        Set(mRed * c.mRed, mGreen * c.mGreen, mBlue * c.mBlue, mBrightness * c.mBrightness);
        return *this;
    }
    constexpr VXMaterialColor4& operator+=(const VXMaterialColor4& c)
    {
        Set(mRed + c.mRed, mGreen + c.mGreen, mBlue + c.mBlue, mBrightness + c.mBrightness);
        return *this;
    }
    constexpr VXMaterialColor4& operator-=(const VXMaterialColor4& c)
    {
        Set(mRed - c.mRed, mGreen - c.mGreen, mBlue - c.mBlue, mBrightness - c.mBrightness);
        return *this;
    }
    constexpr VXMaterialColor4& operator*=(float s) { return *this *= VXMaterialColor4(s, s, s, s); }
    constexpr VXMaterialColor4& operator+=(float s) { return *this += VXMaterialColor4(s, s, s, s); }

    constexpr VXMaterialColor4 operator*(const VXMaterialColor4& c) const { return VXMaterialColor4(*this) *= c; }
    constexpr VXMaterialColor4 operator*(float s) const { return VXMaterialColor4(*this) *= s; }
    constexpr VXMaterialColor4 operator+(const VXMaterialColor4& c) const { return VXMaterialColor4(*this) += c; }
    constexpr VXMaterialColor4 operator+(float s) const { return VXMaterialColor4(*this) += s; }
    constexpr VXMaterialColor4 operator-(const VXMaterialColor4& c) const { return VXMaterialColor4(*this) -= c; }
    friend constexpr bool operator==(const VXMaterialColor4&, const VXMaterialColor4&) = default;

private:
    float mRed = 0, mGreen = 0, mBlue = 0, mBrightness = 1;
};
static_assert(sizeof(VXMaterialColor4) == 16, "handed to graphics calls as four floats");
