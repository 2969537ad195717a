#include "host/overlay/Overlays.h"

#include "base/BText.h"
#include "base/CPB_Offscreen.h"
#include "draw/VXObject2D.h"
#include "engine/VXObject.h"
#include "engine/VXScene.h"
#include "host/image/Picture.h"
#include "host/overlay/Overlay.h"
#include "host/text/FontFolders.h"
#include "mesh/VXGeom.h"

#include <SkBitmap.h>
#include <SkCanvas.h>
#include <SkFontMgr.h>
#include <SkImage.h>
#include <SkImageInfo.h>
#include <SkPath.h>
#include <SkTypeface.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace vx
{
namespace
{
constexpr int kMargin = 16;

// --- Text

SkPaint TextPaint(float size, SkColor color)
{
    static const sk_sp<SkTypeface> face = []
    {
        const sk_sp<SkFontMgr> fonts(SkFontMgr::RefDefault());
        sk_sp<SkTypeface> found;
        for (const BPath& file : SystemSansFonts())
            if (!found)
                found.reset(fonts->createFromFile(file.FullPath().CString()));
        return found;
    }();
    SkPaint paint;
    paint.setAntiAlias(true);
    paint.setTypeface(face);
    paint.setTextSize(size);
    paint.setColor(color);
    paint.setHinting(SkPaint::kSlight_Hinting);
    paint.setSubpixelText(true);
    return paint;
}

float WidthOf(const SkPaint& paint, const std::string& text) { return paint.measureText(text.data(), text.size()); }

void DrawWords(SkCanvas& canvas, const std::string& text, float x, float y, const SkPaint& paint)
{
    canvas.drawText(text.data(), text.size(), x, y, paint);
}

void DrawPanel(SkCanvas& canvas, int width, int height)
{
    SkPaint paint;
    paint.setAntiAlias(true);
    paint.setColor(SkColorSetARGB(150, 24, 27, 31));
    canvas.drawRoundRect(SkRect::MakeIWH(width, height), 6, 6, paint);
}

// --- The items

class StatsOverlay : public Overlay
{
public:
    StatsOverlay()
    {
        SetOffsetX(kMargin);
        SetOffsetY(kMargin);
    }

protected:
    Size Measure(const OverlayFrame& frame) override
    {
        std::int64_t objects = 0, polygons = 0, vertices = 0;
        for (std::int64_t i = 0; i < frame.scene->NumObjects(); ++i)
        {
            const VXObject* const object = frame.scene->Object(int(i));
            const VXGeom* const geom = object && object->Visible() ? object->CurSubdivGeom(true) : nullptr;
            if (!geom || object->InternalName() == "GROUND")
                continue;
            ++objects;
            polygons += geom->NumPolys();
            vertices += geom->NumVerts(false);
        }
        mRows = {{"objects", GroupedDigits(objects).Std()},
                 {"polygons", GroupedDigits(polygons).Std()},
                 {"vertices", GroupedDigits(vertices).Std()}};
        if (frame.milliseconds > 0)
            mRows.push_back({"frame", BString::Format("%.1f ms", double(frame.milliseconds)).Std()});
        return {kWidth, int(mRows.size()) * kLine + 2 * kPad};
    }

    void Paint(SkCanvas& canvas, const OverlayFrame&, const Size& size) override
    {
        DrawPanel(canvas, size.width, size.height);
        const SkPaint names = TextPaint(13, SkColorSetARGB(255, 178, 186, 194)), values = TextPaint(13, SK_ColorWHITE);
        float y = kPad + kLine * 0.74f;
        for (const auto& [name, value] : mRows)
        {
            DrawWords(canvas, name, kPad, y, names);
            DrawWords(canvas, value, float(size.width - kPad) - WidthOf(values, value), y, values);
            y += kLine;
        }
    }

private:
    static constexpr int kWidth = 168, kLine = 19, kPad = 10;

    std::vector<std::pair<std::string, std::string>> mRows;
};

class TitleOverlay : public Overlay
{
public:
    explicit TitleOverlay(const BString& words) : mWords(words.Std())
    {
        SetPinX(kPinCenterX);
        SetOffsetY(kMargin);
    }

protected:
    Size Measure(const OverlayFrame& frame) override
    {
        const float size = TextSize(frame);
        const int width = int(std::ceil(WidthOf(TextPaint(size, SK_ColorWHITE), mWords))) + 2 * kPad;
        return {std::min(width, frame.width), int(size * 1.7f)};
    }

    void Paint(SkCanvas& canvas, const OverlayFrame& frame, const Size& size) override
    {
        DrawPanel(canvas, size.width, size.height);
        const float text = TextSize(frame);
        DrawWords(canvas, mWords, kPad, 0.5f * float(size.height) + 0.36f * text, TextPaint(text, SK_ColorWHITE));
    }

private:
    static constexpr int kPad = 14;
    static float TextSize(const OverlayFrame& frame) { return std::clamp(0.036f * float(frame.height), 12.0f, 48.0f); }

    std::string mWords;
};

/// The three axes as a small cross that turns with the camera; what points away is drawn first and fainter.
class AxesOverlay : public Overlay
{
public:
    AxesOverlay()
    {
        SetPinY(kPinBottom);
        SetOffsetX(kMargin);
        SetOffsetY(-kMargin);
    }

protected:
    Size Measure(const OverlayFrame&) override { return {kSide, kSide}; }

    void Paint(SkCanvas& canvas, const OverlayFrame& frame, const Size&) override
    {
        struct Axis
        {
            const char* name;
            SkColor color;
            VERTEX direction; ///< in view space
        };
        Axis axes[3] = {{"x", SkColorSetARGB(255, 222, 70, 64), {}},
                        {"y", SkColorSetARGB(255, 98, 178, 60), {}},
                        {"z", SkColorSetARGB(255, 66, 124, 230), {}}};
        for (int i = 0; i < 3; ++i)
        {
            const VERTEX d = {frame.camera[i][0], frame.camera[i][1], frame.camera[i][2]};
            const float length = Length(d);
            axes[i].direction = length > 0 ? d * (1 / length) : VERTEX();
        }
        std::sort(std::begin(axes), std::end(axes),
                  [](const Axis& a, const Axis& b) { return a.direction.z < b.direction.z; });
        const float middle = 0.5f * kSide, reach = middle - 12;
        for (const Axis& axis : axes)
        {
            const float x = middle + reach * axis.direction.x, y = middle - reach * axis.direction.y;
            SkPaint line;
            line.setAntiAlias(true);
            line.setColor(axis.color);
            line.setAlpha(axis.direction.z < -0.2f ? 130 : 255);
            line.setStrokeWidth(2.5f);
            line.setStrokeCap(SkPaint::kRound_Cap);
            canvas.drawLine(middle, middle, x, y, line);
            canvas.drawCircle(x, y, 8, line);
            const SkPaint text = TextPaint(12, SK_ColorWHITE);
            DrawWords(canvas, axis.name, x - 0.5f * WidthOf(text, axis.name), y + 4, text);
        }
    }

private:
    static constexpr int kSide = 96;
};

class FrameOverlay : public Overlay
{
public:
    explicit FrameOverlay(float aspect) : mAspect(aspect) {}

protected:
    Size Measure(const OverlayFrame& frame) override { return {frame.width, frame.height}; }

    void Paint(SkCanvas& canvas, const OverlayFrame&, const Size& size) override
    {
        constexpr float kUnits = 10000; // the aspect as a rectangle of whole numbers
        CPB_Rect inset;
        ComputeInset({0, 0, size.width, size.height}, {0, 0, int(mAspect * kUnits), int(kUnits)}, inset);
        const SkRect inner =
            SkRect::MakeLTRB(SkScalar(inset.x1), SkScalar(inset.y1), SkScalar(inset.x2), SkScalar(inset.y2));
        const float width = float(size.width), height = float(size.height);
        SkPaint shade;
        shade.setColor(SkColorSetARGB(120, 0, 0, 0));
        const SkRect bars[] = {SkRect::MakeLTRB(0, 0, width, inner.top()),
                               SkRect::MakeLTRB(0, inner.bottom(), width, height),
                               SkRect::MakeLTRB(0, inner.top(), inner.left(), inner.bottom()),
                               SkRect::MakeLTRB(inner.right(), inner.top(), width, inner.bottom())};
        for (const SkRect& bar : bars)
            if (!bar.isEmpty())
                canvas.drawRect(bar, shade);
        SkPaint line;
        line.setStyle(SkPaint::kStroke_Style);
        line.setStrokeWidth(1);
        line.setColor(SkColorSetARGB(200, 255, 255, 255));
        canvas.drawRect(inner.makeInset(0.5f, 0.5f), line);
    }

private:
    float mAspect;
};

class LogoOverlay : public Overlay
{
public:
    explicit LogoOverlay(sk_sp<SkImage> image) : mImage(std::move(image))
    {
        SetPinX(kPinRight);
        SetPinY(kPinBottom);
        SetOffsetX(-kMargin);
        SetOffsetY(-kMargin);
    }

protected:
    // No larger than a quarter of the picture's sides.
    Size Measure(const OverlayFrame& frame) override
    {
        const float width = float(mImage->width()), height = float(mImage->height());
        const float shrink = std::min({1.0f, 0.25f * float(frame.width) / width, 0.25f * float(frame.height) / height});
        return {std::max(int(width * shrink), 1), std::max(int(height * shrink), 1)};
    }

    void Paint(SkCanvas& canvas, const OverlayFrame&, const Size& size) override
    {
        SkPaint paint;
        paint.setFilterQuality(kMedium_SkFilterQuality);
        canvas.drawImageRect(mImage.get(), SkRect::MakeIWH(size.width, size.height), &paint);
    }

private:
    sk_sp<SkImage> mImage;
};

sk_sp<SkImage> ImageOf(const CPB_Offscreen& picture)
{
    const SkImageInfo info =
        SkImageInfo::Make(picture.Width(), picture.Height(), kRGBA_8888_SkColorType, kUnpremul_SkAlphaType);
    SkBitmap bitmap;
    if (!bitmap.tryAllocPixels(info.makeAlphaType(kPremul_SkAlphaType)))
        return nullptr;
    for (int y = 0; y < picture.Height(); ++y)
    {
        const std::uint8_t* const from = picture.Row(y);
        std::uint8_t* const to = static_cast<std::uint8_t*>(bitmap.getAddr(0, y));
        for (int x = 0; x < picture.Width(); ++x)
            for (int c = 0; c < 4; ++c)
                to[4 * x + c] =
                    c == 3 ? from[4 * x + 3] : std::uint8_t((from[4 * x + c] * from[4 * x + 3] + 127) / 255);
    }
    return SkImage::MakeFromBitmap(bitmap);
}
} // namespace

bool HaveOverlays() { return true; }

std::unique_ptr<VXObject2D> MakeOverlay(const OverlaySpec& spec, BString& problem)
{
    switch (spec.kind)
    {
    case OverlayKind::Stats:
        return std::make_unique<StatsOverlay>();
    case OverlayKind::Title:
        if (BArray<std::uint32_t> letters; ConvertUTF8toUTF32(spec.text.CString(), spec.text.Length(), letters) < 0)
        {
            problem = "the title is no UTF-8 text";
            return nullptr;
        }
        return std::make_unique<TitleOverlay>(spec.text);
    case OverlayKind::Axes:
        return std::make_unique<AxesOverlay>();
    case OverlayKind::Frame:
        return std::make_unique<FrameOverlay>(spec.aspect);
    case OverlayKind::Logo:
        break;
    }
    const PicturePtr picture = ReadPicture(BPath(spec.text), problem);
    const sk_sp<SkImage> image = picture ? ImageOf(*picture) : nullptr;
    if (!image)
        problem = spec.text + ": " + (picture ? BString("does not fit into memory") : problem);
    return image ? std::make_unique<LogoOverlay>(image) : nullptr;
}
} // namespace vx
