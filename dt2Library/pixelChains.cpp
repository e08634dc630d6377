#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

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

/// Whether a pixel is neither an end nor needed to hang together, as at corners of stairs.
bool isNeedless(Ring ring) { return countPieces(ring) == 1 && countPairs(ring) >= 2; }

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
    explicit Thinner(PixelSet& set_) : set(set_), vPassesLeft(set.getFrameSize()) {
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
        std::erase_if(vBorder,
                      [this](std::size_t pixel) { return !set.isSet(pixel) || --vPassesLeft[pixel] == 0; });
        for (const std::size_t pixel : vPeeled)
            for (int i = 0; i < ringSize; ++i) note(set.neighbour(pixel, i));
        return !vPeeled.empty();
    }

    /// Takes needless pixels away, one after the other.
    bool tidyUp() {
        bool bChanged = false;
        for (const std::size_t pixel : set.pixels()) {
            if (!set.isSet(pixel) || !isNeedless(set.ringOf(pixel))) continue;
            set.takeAway(pixel);
            bChanged = true;
        }
        return bChanged;
    }

private:
    static bool isPeeled(Ring ring, bool bTurned) {
        if (!isNeedless(ring) || countPairs(ring) > 3) return false;
        const Ring turned = bTurned ? std::rotr(ring, 4) : ring;
        return (turned & bit(2)) == 0 || ((turned & (bit(0) | bit(1))) == 0 && (turned & bit(3)) != 0);
    }

    void note(std::size_t pixel) {
        if (!set.isSet(pixel)) return;
        if (vPassesLeft[pixel] == 0) vBorder.push_back(pixel);
        vPassesLeft[pixel] = 2;
    }

    PixelSet& set;
    /// Only these are looked at, by one pass of each kind after something around them has gone: what is inside of something thick
    /// waits until it is reached, and what is thin isn't asked again.
    std::vector<std::size_t> vBorder;
    std::vector<std::uint8_t> vPassesLeft;
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

/// Around pixels that are gone takes away what is needless now, and appends it. The four pixels of a square, which may have joined
/// branches, would be a closed loop by their links.
void thinAround(PixelSet& set, std::vector<std::size_t>& vGone) {
    for (std::size_t i = 0; i < vGone.size(); ++i)
        for (int direction = 0; direction < ringSize; ++direction) {
            const std::size_t pixel = set.neighbour(vGone[i], direction);
            if (!set.isSet(pixel) || !isNeedless(set.ringOf(pixel))) continue;
            set.takeAway(pixel);
            vGone.push_back(pixel);
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
        thinAround(set, vShort);
    } while (set.sweep(inOut));
}

void traceChains(const FloatMtx& in, std::vector<std::vector<Point2>>& vvOut) {
    RoundToNearest nearest;
    ChainTracer(in, vvOut).trace();
}

}  // namespace KELMAR_NORVIK2D
