#include "draw/VXPickBuffer.h"

#include <algorithm>
#include <cmath>

// --- Filling

bool VXPickBuffer::Reset(int left, int top, int width, int height)
{
    mLeft = left;
    mTop = top;
    mWidth = mHeight = 0;
    mRuns.Empty();
    mNextName = 1;
    const std::int64_t pixels = std::int64_t(width) * height;
    const auto beyond = [](int from, int count)
    { return from < -kFarthest || std::int64_t(from) + count > std::int64_t(kFarthest); };
    if (beyond(left, width) || beyond(top, height))
        return false;
    if (width < 1 || height < 1 || !mNames.SetCountForWriting(pixels) || !mDepths.SetCountForWriting(pixels))
        return false;
    std::fill(mNames.begin(), mNames.end(), 0u);
    std::fill(mDepths.begin(), mDepths.end(), 1.0f);
    mWidth = width;
    mHeight = height;
    return true;
}

std::uint32_t VXPickBuffer::AddNames(VXPickKind kind, std::int32_t object, std::int32_t drawGeom, std::int32_t count)
{
    const std::uint32_t first = mNextName, wanted = kind == VXPickKind::Object ? 1 : std::uint32_t(count);
    if (count < 1 || wanted > UINT32_MAX - first || !mRuns.Append({first, kind, object, drawGeom}))
        return 0;
    mNextName = first + wanted;
    return first;
}

// --- Reading

bool VXPickBuffer::Contains(int x, int y) const
{
    return x >= mLeft && y >= mTop && x < mLeft + mWidth && y < mTop + mHeight;
}

VXPickHit VXPickBuffer::HitOf(int x, int y) const
{
    VXPickHit hit;
    const std::uint32_t name = NameAt(x, y);
    if (name == 0 || name >= mNextName)
        return hit;
    const Run* const next = std::upper_bound(mRuns.begin(), mRuns.end(), name,
                                             [](std::uint32_t value, const Run& run) { return value < run.first; });
    const Run& run = *(next - 1); // the first run begins with the first name
    hit.kind = run.kind;
    hit.object = run.object;
    if (run.kind == VXPickKind::Polygon)
    {
        hit.drawGeom = run.drawGeom;
        hit.polygon = std::int32_t(name - run.first);
    }
    hit.x = float(x) + 0.5f;
    hit.y = float(y) + 0.5f;
    hit.depth = DepthAt(x, y);
    return hit;
}

VXPickHit VXPickBuffer::At(int x, int y) const { return HitOf(x, y); }

bool VXPickBuffer::InRectangle(int left, int top, int right, int bottom, BArray<VXPickHit>& hits) const
{
    hits.Empty();
    left = std::max(left, mLeft);
    top = std::max(top, mTop);
    right = std::min(right, mLeft + mWidth);
    bottom = std::min(bottom, mTop + mHeight);
    if (left >= right)
        return true;
    struct Seen
    {
        std::uint32_t name;
        float depth;
        std::int64_t pixel;
    };
    BArray<Seen> seen; // neighbours of one name along a row together, or a large picture would take much memory
    for (int y = top; y < bottom; ++y)
    {
        std::uint32_t before = 0;
        for (std::int64_t at = IndexOf(left, y), end = at + (right - left); at < end; ++at)
        {
            const Seen here{mNames[at], mDepths[at], at};
            if (here.name && here.name == before)
            {
                Seen& last = seen[seen.Count() - 1];
                last = here.depth < last.depth ? here : last;
            }
            else if (here.name && !seen.Append(here))
                return false;
            before = here.name;
        }
    }
    std::sort(seen.begin(), seen.end(),
              [](const Seen& a, const Seen& b)
              {
                  if (a.name != b.name)
                      return a.name < b.name;
                  return a.depth != b.depth ? a.depth < b.depth : a.pixel < b.pixel;
              });
    std::uint32_t before = 0;
    for (const Seen& here : seen)
    {
        if (here.name != before &&
            !hits.Append(HitOf(mLeft + int(here.pixel % mWidth), mTop + int(here.pixel / mWidth))))
            return false;
        before = here.name;
    }
    return true;
}

VXPickHit VXPickBuffer::Nearest(int x, int y, float radius) const
{
    if (!(radius >= 0))
        return {};
    const double reach = std::min(std::floor(double(radius)), double(INT32_MAX / 4)), limit = double(radius) * radius;
    const auto clamped = [](double v, int low, int high) { return int(std::clamp(v, double(low), double(high))); };
    const int left = clamped(x - reach, mLeft, mLeft + mWidth), right = clamped(x + reach + 1, left, mLeft + mWidth);
    const int top = clamped(y - reach, mTop, mTop + mHeight), bottom = clamped(y + reach + 1, top, mTop + mHeight);
    double best = INFINITY;
    int bestX = 0, bestY = 0;
    for (int py = top; py < bottom; ++py)
        for (int px = left; px < right; ++px)
        {
            const double dx = double(px) - x, dy = double(py) - y, distance = dx * dx + dy * dy;
            const std::uint32_t name = mNames[IndexOf(px, py)];
            if (name == 0 || distance > limit || distance > best)
                continue;
            const float depth = DepthAt(px, py), bestDepth = DepthAt(bestX, bestY);
            if (distance < best || depth < bestDepth || (depth == bestDepth && name < NameAt(bestX, bestY)))
            {
                best = distance;
                bestX = px;
                bestY = py;
            }
        }
    return best < INFINITY ? HitOf(bestX, bestY) : VXPickHit();
}
