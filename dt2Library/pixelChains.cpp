#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "distance.h"
#include "geometryTools.h"
#include "mtxTools.h"
#include "roundingMode.h"

namespace KELMAR_NORVIK2D {

namespace {

/// The pixels around one, a bit each, counterclockwise from the one to the right: those of even numbers have a side in common
/// with it, the others a corner.
///
///     3 2 1
///     4   0
///     5 6 7
using Ring = std::uint8_t;

constexpr int ringSize = 8;
constexpr Ring sides = 0x55, corners = 0xAA, everything = 0xFF;
constexpr std::array<int, ringSize> ringX{1, 1, 0, -1, -1, -1, 0, 1};
constexpr std::array<int, ringSize> ringY{0, 1, 1, 1, 0, -1, -1, -1};

constexpr int opposite(int direction) { return direction ^ 4; }

constexpr Ring bit(int direction) { return static_cast<Ring>(1U << direction); }

/// The links of a pixel: to all set ones with a common side, and to those at corners that aren't beside one of these.
Ring linksOf(Ring ring) {
    const auto straight = static_cast<Ring>(ring & sides);
    return static_cast<Ring>(ring & ~(std::rotl(straight, 1) | std::rotr(straight, 1)));
}

/// In how many pieces the set pixels around one fall without it: going around, each begins behind a side that isn't set. A pixel
/// with four set sides counts 0, since taking it away would make a hole. So if one that counts 1 goes, what hangs together stays so, and
/// so does what isn't set.
int countPieces(Ring ring) {
    return std::popcount(static_cast<Ring>(~ring & (std::rotr(ring, 1) | std::rotr(ring, 2)) & sides));
}

/// Tells ends from borders: of the four pairs in which the ring can be divided, how many are set at least in part, in that of the two
/// divisions that gives less. It is 1 at an end, even if two pixels that touch each other are there, and 2 or 3 on the border of
/// something thick.
int countPairs(Ring ring) {
    const auto pairs = static_cast<Ring>(ring | std::rotr(ring, 1));
    return std::min(std::popcount(static_cast<Ring>(pairs & sides)),
                    std::popcount(static_cast<Ring>(pairs & corners)));
}

/// Which pixels are set. A frame of others around them saves all tests for the border.
class PixelSet {
public:
    explicit PixelSet(const FloatMtx& mtx)
        : stride(static_cast<std::ptrdiff_t>(mtx.getWidth()) + 2),
          vSet(static_cast<std::size_t>(stride) * (static_cast<std::size_t>(mtx.getHeight()) + 2)) {
        for (int y = 0; y < mtx.getHeight(); ++y)
            for (int x = 0; x < mtx.getWidth(); ++x) {
                if (mtx.get(x, y) == 0.0F) continue;
                vPixels.push_back(static_cast<std::size_t>((y + 1) * stride + x + 1));
                vSet[vPixels.back()] = 1;
            }
    }

    std::size_t neighbour(std::size_t pixel, int direction) const {
        const auto at = static_cast<std::size_t>(direction);
        return pixel + static_cast<std::size_t>(ringY[at] * stride + ringX[at]);
    }
    Ring ringOf(std::size_t pixel) const {
        Ring ring = 0;
        for (int i = 0; i < ringSize; ++i)
            if (isSet(neighbour(pixel, i))) ring |= bit(i);
        return ring;
    }
    Ring linksAt(std::size_t pixel) const { return linksOf(ringOf(pixel)); }
    int countLinks(std::size_t pixel) const { return std::popcount(linksAt(pixel)); }

    /// Row by row from the bottom, left to right.
    const std::vector<std::size_t>& pixels() const { return vPixels; }
    int xOf(std::size_t pixel) const {
        return static_cast<int>(pixel % static_cast<std::size_t>(stride)) - 1;
    }
    int yOf(std::size_t pixel) const {
        return static_cast<int>(pixel / static_cast<std::size_t>(stride)) - 1;
    }

    std::size_t getFrameSize() const { return vSet.size(); }
    bool isSet(std::size_t pixel) const { return vSet[pixel] != 0; }

    /// Pixels that are taken away stay in the list up to the next sweep().
    void takeAway(std::size_t pixel) { vSet[pixel] = 0; }
    /// Sets to 0 what was taken away. Whether there was anything.
    bool sweep(FloatMtx& mtx) {
        const auto gone = [&](std::size_t pixel) {
            if (!isSet(pixel)) mtx.set(xOf(pixel), yOf(pixel), 0.0F);
            return !isSet(pixel);
        };
        return std::erase_if(vPixels, gone) != 0;
    }

private:
    std::ptrdiff_t stride;
    std::vector<std::uint8_t> vSet;
    std::vector<std::size_t> vPixels;
};

// Thinning

class Thinner {
public:
    explicit Thinner(PixelSet& set_) : set(set_), vNoted(set.getFrameSize()) {
        for (const std::size_t pixel : set.pixels())
            if (set.ringOf(pixel) != everything) note(pixel);
    }

    /// Guo and Hall's pass: peels the borders of thick places off on two of their four sides, all pixels at once. It is for the
    /// sides 0 and 2 in the ring as it is, and for the opposite ones with the ring turned around. Whether anything was left to peel.
    bool peel(bool bTurned) {
        std::vector<std::size_t> vPeeled;
        for (const std::size_t pixel : vBorder)
            if (isPeeled(set.ringOf(pixel), bTurned)) vPeeled.push_back(pixel);
        for (const std::size_t pixel : vPeeled) set.takeAway(pixel);
        std::erase_if(vBorder, [this](std::size_t pixel) { return !set.isSet(pixel); });
        for (const std::size_t pixel : vPeeled)
            for (int i = 0; i < ringSize; ++i) note(set.neighbour(pixel, i));
        return !vPeeled.empty();
    }

    /// Takes away, one after the other, what is neither an end nor needed to hang together, such as corners of stairs.
    bool tidyUp() {
        bool bChanged = false;
        for (const std::size_t pixel : set.pixels()) {
            if (!set.isSet(pixel)) continue;
            const Ring ring = set.ringOf(pixel);
            if (countPieces(ring) != 1 || countPairs(ring) < 2) continue;
            set.takeAway(pixel);
            bChanged = true;
        }
        return bChanged;
    }

private:
    static bool isPeeled(Ring ring, bool bTurned) {
        const int numPairs = countPairs(ring);
        if (countPieces(ring) != 1 || numPairs < 2 || numPairs > 3) return false;
        const Ring turned = bTurned ? std::rotr(ring, 4) : ring;
        return (turned & bit(2)) == 0 || ((turned & (bit(0) | bit(1))) == 0 && (turned & bit(3)) != 0);
    }

    void note(std::size_t pixel) {
        if (!set.isSet(pixel) || vNoted[pixel]) return;
        vNoted[pixel] = true;
        vBorder.push_back(pixel);
    }

    PixelSet& set;
    /// Only these are looked at: what is inside of something thick waits until it is reached.
    std::vector<std::size_t> vBorder;
    std::vector<bool> vNoted;
};

// Pruning

/// Follows the links from a pixel with at most one of them. `vBranch` is replaced by the pixels up to an end, or before a junction; by
/// the first `maxLength` of them if they are more.
void followBranch(const PixelSet& set, std::size_t end, std::size_t maxLength,
                  std::vector<std::size_t>& vBranch) {
    vBranch.assign(1, end);
    Ring links = set.linksAt(end);
    while (links != 0 && vBranch.size() < maxLength) {
        const int direction = std::countr_zero(links);
        const std::size_t next = set.neighbour(vBranch.back(), direction);
        links = set.linksAt(next);
        if (std::popcount(links) > 2) return;
        vBranch.push_back(next);
        links &= static_cast<Ring>(~bit(opposite(direction)));
    }
}

// Tracing

class ChainTracer {
public:
    ChainTracer(const FloatMtx& mtx, std::vector<std::vector<Point2>>& vvLines_)
        : set(mtx), vLinks(set.getFrameSize()), vvLines(vvLines_) {
        for (const std::size_t pixel : set.pixels()) vLinks[pixel] = set.linksAt(pixel);
    }

    void trace() {
        for (const std::size_t pixel : set.pixels())
            while (vLinks[pixel] != 0 && set.countLinks(pixel) != 2) traceLine(pixel);
        // What is left are loops.
        for (const std::size_t pixel : set.pixels())
            if (vLinks[pixel] != 0) traceLine(pixel);
    }

private:
    Point2 centreOf(std::size_t pixel) const { return {set.xOf(pixel) + 0.5, set.yOf(pixel) + 0.5}; }

    /// Follows links that weren't followed yet, up to an end, a junction or the pixel itself.
    void traceLine(std::size_t first) {
        std::vector<Point2> line{centreOf(first)};
        std::size_t pixel = first;
        do {
            const int direction = std::countr_zero(vLinks[pixel]);
            vLinks[pixel] &= static_cast<Ring>(~bit(direction));
            pixel = set.neighbour(pixel, direction);
            vLinks[pixel] &= static_cast<Ring>(~bit(opposite(direction)));
            line.push_back(centreOf(pixel));
        } while (pixel != first && set.countLinks(pixel) == 2);
        vvLines.push_back(std::move(line));
    }

    PixelSet set;
    std::vector<Ring> vLinks;  ///< those that weren't followed yet
    std::vector<std::vector<Point2>>& vvLines;
};

// Simplification

using Line = std::vector<Point2>;

bool isClosed(const Line& line) { return line.front() == line.back(); }

double distanceFromSegment(const Point2& a, const Point2& b, const Point2& q) {
    const double dx = b.x() - a.x(), dy = b.y() - a.y();
    const double length = std::hypot(dx, dy);
    const double qx = q.x() - a.x(), qy = q.y() - a.y();
    if (length == 0.0) return std::hypot(qx, qy);
    // Not by squares, which would overflow long before the coordinates do.
    const double along = dx / length * qx + dy / length * qy;
    if (along <= 0.0) return std::hypot(qx, qy);
    if (along >= length) return std::hypot(q.x() - b.x(), q.y() - b.y());
    return std::fabs(dx / length * qy - dy / length * qx);
}

struct Farthest {
    double distance = -1.0;
    std::size_t index = 0;
};

/// The first one of the inner points between two that are farthest from the segment ab.
Farthest findFarthest(const Line& line, std::size_t first, std::size_t last, const Point2& a,
                      const Point2& b) {
    Farthest farthest;
    for (std::size_t i = first + 1; i < last; ++i) {
        const double distance = distanceFromSegment(a, b, line[i]);
        if (distance > farthest.distance) farthest = {distance, i};
    }
    return farthest;
}

using Kept = std::vector<bool>;

/// Of a closed line, the point farthest from its ends and the one farthest from the segment between these are kept in any case.
void keepTriangle(const Line& line, Kept& kept) {
    const std::size_t last = line.size() - 1;
    const std::size_t tip = findFarthest(line, 0, last, line[0], line[0]).index;
    const Farthest before = findFarthest(line, 0, tip, line[0], line[tip]);
    const Farthest behind = findFarthest(line, tip, last, line[0], line[tip]);
    kept[tip] = true;
    kept[before.distance >= behind.distance ? before.index : behind.index] = true;
}

void keepFarthest(const Line& line, double tolerance, Kept& kept) {
    // Ranges between kept points, the last one first.
    std::vector<std::pair<std::size_t, std::size_t>> vRanges;
    for (std::size_t i = 1, first = 0; i < line.size(); ++i)
        if (kept[i]) vRanges.emplace_back(std::exchange(first, i), i);
    while (!vRanges.empty()) {
        const auto range = vRanges.back();
        vRanges.pop_back();
        const Farthest farthest =
            findFarthest(line, range.first, range.second, line[range.first], line[range.second]);
        if (!(farthest.distance > tolerance)) continue;
        kept[farthest.index] = true;
        vRanges.emplace_back(range.first, farthest.index);
        vRanges.emplace_back(farthest.index, range.second);
    }
}

void simplifyByDistance(Line& line, double tolerance) {
    Kept kept(line.size());
    kept.front() = kept.back() = true;
    if (isClosed(line)) keepTriangle(line, kept);
    keepFarthest(line, tolerance, kept);
    std::size_t numKept = 0;
    for (std::size_t i = 0; i < line.size(); ++i)
        if (kept[i]) line[numKept++] = line[i];
    line.resize(numKept);
}

bool isOnSegment(const Point2& a, const Point2& b, const Point2& q) {
    return getOrientation2(&a, &b, &q) == ORIENTATION2_COLLINEAR && (q == a || q == b || isBetween(a, b, q));
}

void dropCollinear(Line& line, std::size_t least) {
    std::size_t numKept = 1;
    for (std::size_t i = 1; i < line.size(); ++i) {
        const bool bInner = i + 1 < line.size() && numKept + line.size() - i > least;
        if (bInner && isOnSegment(line[numKept - 1], line[i + 1], line[i])) continue;
        line[numKept++] = line[i];
    }
    line.resize(numKept);
}

}  // namespace

void thinPixels(FloatMtx& inOut) {
    RoundToNearest nearest;
    PixelSet set(inOut);
    Thinner thinner(set);
    bool bChanged = true;
    while (bChanged) {
        bChanged = thinner.peel(false);
        bChanged |= thinner.peel(true);
    }
    while (thinner.tidyUp()) {
    }
    set.sweep(inOut);
}

void pruneChains(FloatMtx& inOut, int minLength) {
    RoundToNearest nearest;
    if (minLength <= 1) return;
    const auto length = static_cast<std::size_t>(minLength);
    PixelSet set(inOut);
    std::vector<std::size_t> vBranch, vShort;
    do {
        vShort.clear();
        for (const std::size_t pixel : set.pixels()) {
            if (set.countLinks(pixel) > 1) continue;
            followBranch(set, pixel, length, vBranch);
            if (vBranch.size() < length) vShort.insert(vShort.end(), vBranch.begin(), vBranch.end());
        }
        for (const std::size_t pixel : vShort) set.takeAway(pixel);
    } while (set.sweep(inOut));
}

void traceChains(const FloatMtx& in, std::vector<std::vector<Point2>>& vvOut) {
    RoundToNearest nearest;
    ChainTracer(in, vvOut).trace();
}

void simplifyPolyline(std::vector<Point2>& inOut, double tolerance) {
    RoundToNearest nearest;
    if (inOut.empty()) return;
    const std::size_t least = isClosed(inOut) ? 4 : 2;
    if (inOut.size() <= least) return;
    if (tolerance > 0.0)
        simplifyByDistance(inOut, tolerance);
    else
        dropCollinear(inOut, least);
}

void polylinesToSegments(const std::vector<std::vector<Point2>>& vvLines, std::vector<Segment2>& vSegments) {
    RoundToNearest nearest;
    for (const Line& line : vvLines)
        for (std::size_t i = 1; i < line.size(); ++i)
            if (line[i - 1] != line[i]) vSegments.emplace_back(line[i - 1], line[i]);
}

}  // namespace KELMAR_NORVIK2D
