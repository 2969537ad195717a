#include "tests/text/FilledArea.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace
{
struct Point
{
    double x, y;
};
struct Edge // low end first
{
    Point a, b;
    int winding; // +1 upwards

    double XAt(double y) const { return a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y); }
};

// Contours by FreeType's tags, read here by hand: on-curve points, conic and cubic controls, implied middles.
class Contour
{
public:
    Contour(const FT_Outline& outline, int first, int last, int pieces) : mPieces(pieces)
    {
        std::vector<Point> points;
        std::vector<int> tags;
        for (int i = first; i <= last; ++i)
        {
            const Point here{double(outline.points[i].x), double(outline.points[i].y)};
            const int tag = FT_CURVE_TAG(outline.tags[i]);
            if (!tags.empty() && tags.back() == FT_CURVE_TAG_CONIC && tag == FT_CURVE_TAG_CONIC)
            {
                points.push_back({(points.back().x + here.x) / 2, (points.back().y + here.y) / 2});
                tags.push_back(FT_CURVE_TAG_ON);
            }
            points.push_back(here);
            tags.push_back(tag);
        }
        if (tags.front() == FT_CURVE_TAG_CONIC && tags.back() == FT_CURVE_TAG_CONIC)
        {
            points.push_back({(points.back().x + points.front().x) / 2, (points.back().y + points.front().y) / 2});
            tags.push_back(FT_CURVE_TAG_ON);
        }
        const std::size_t count = points.size();
        const std::size_t start = std::size_t(std::find(tags.begin(), tags.end(), FT_CURVE_TAG_ON) - tags.begin());
        mRing.push_back(points[start % count]);
        for (std::size_t k = 1; k <= count; ++k)
        {
            const std::size_t i = (start + k) % count, next = (i + 1) % count, third = (i + 2) % count;
            if (tags[i] == FT_CURVE_TAG_ON)
                mRing.push_back(points[i]);
            else if (tags[i] == FT_CURVE_TAG_CONIC)
            {
                const Point a = mRing.back(), b = points[i], c = points[next];
                Curve([&](double t) { return Mix(Mix(a, b, t), Mix(b, c, t), t); });
                ++k;
            }
            else
            {
                const Point a = mRing.back(), b = points[i], c = points[next], d = points[third];
                Curve(
                    [&](double t)
                    {
                        const Point middle = Mix(b, c, t);
                        return Mix(Mix(Mix(a, b, t), middle, t), Mix(middle, Mix(c, d, t), t), t);
                    });
                k += 2;
            }
        }
    }
    const std::vector<Point>& Ring() const { return mRing; }

private:
    static Point Mix(const Point& a, const Point& b, double t)
    {
        return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
    }
    template <class At>
    void Curve(At at)
    {
        for (int i = 1; i <= mPieces; ++i)
            mRing.push_back(at(double(i) / mPieces));
    }

    std::vector<Point> mRing;
    int mPieces;
};

// Heights at which edges begin, end or cross.
std::vector<double> Heights(const std::vector<Edge>& edges)
{
    std::vector<double> heights;
    for (const Edge& edge : edges)
        heights.insert(heights.end(), {edge.a.y, edge.b.y});
    for (std::size_t i = 0; i < edges.size(); ++i)
        for (std::size_t k = i + 1; k < edges.size(); ++k)
        {
            const Edge &p = edges[i], &q = edges[k];
            const double low = std::max(p.a.y, q.a.y), high = std::min(p.b.y, q.b.y);
            if (low >= high)
                continue;
            const double before = p.XAt(low) - q.XAt(low), after = p.XAt(high) - q.XAt(high);
            if (before * after < 0)
                heights.push_back(low + (high - low) * before / (before - after));
        }
    std::sort(heights.begin(), heights.end());
    heights.erase(std::unique(heights.begin(), heights.end()), heights.end());
    return heights;
}
} // namespace

double FilledArea(const FT_Outline& outline, int pieces)
{
    std::vector<Edge> edges;
    int first = 0;
    for (int c = 0; c < outline.n_contours; ++c)
    {
        const int last = outline.contours[c];
        const std::vector<Point> ring = Contour(outline, first, last, pieces).Ring();
        for (std::size_t i = 0; i + 1 < ring.size(); ++i)
            if (ring[i].y < ring[i + 1].y)
                edges.push_back({ring[i], ring[i + 1], 1});
            else if (ring[i].y > ring[i + 1].y)
                edges.push_back({ring[i + 1], ring[i], -1});
        first = last + 1;
    }
    std::sort(edges.begin(), edges.end(), [](const Edge& p, const Edge& q) { return p.a.y < q.a.y; });

    const bool evenOdd = (outline.flags & FT_OUTLINE_EVEN_ODD_FILL) != 0;
    const std::vector<double> heights = Heights(edges);
    std::vector<const Edge*> strip;
    std::size_t begun = 0;
    double area = 0;
    for (std::size_t h = 0; h + 1 < heights.size(); ++h)
    {
        const double low = heights[h], high = heights[h + 1], middle = (low + high) / 2;
        for (; begun < edges.size() && edges[begun].a.y <= low; ++begun)
            strip.push_back(&edges[begun]);
        std::erase_if(strip, [low](const Edge* edge) { return edge->b.y <= low; });
        std::sort(strip.begin(), strip.end(),
                  [middle](const Edge* p, const Edge* q) { return p->XAt(middle) < q->XAt(middle); });
        int winding = 0;
        for (std::size_t i = 0; i + 1 < strip.size(); ++i)
        {
            winding += strip[i]->winding;
            if (evenOdd ? winding % 2 != 0 : winding != 0)
                area += (strip[i + 1]->XAt(middle) - strip[i]->XAt(middle)) * (high - low);
        }
    }
    return area;
}
