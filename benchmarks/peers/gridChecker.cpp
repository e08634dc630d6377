#include <cstdint>

#include "CheckPeer.h"

namespace {

using namespace KELMAR_NORVIK2D;

/// What a client would write whose segments are all about as long as each other and spread evenly over the unit square: lists of
/// the segments that each cell of a grid has in its reach, and each pair tested in one of the cells that it shares.
class GridChecker : public CheckPeer {
public:
    std::size_t findAll() override {
        // Two segments a cell, about.
        size = static_cast<std::size_t>(std::sqrt(static_cast<double>(vInput.size()) / 2));
        std::vector<std::uint32_t> vEnds(size * size + 1), vSegments;
        for (const Segment2& segment : vInput) forEachCell(segment, [&](std::size_t cell) { ++vEnds[cell]; });
        std::uint32_t sum = 0;
        for (std::uint32_t& end : vEnds) end = sum += end;
        vSegments.resize(sum);
        for (std::size_t i = 0; i < vInput.size(); ++i)
            forEachCell(vInput[i],
                        [&](std::size_t cell) { vSegments[--vEnds[cell]] = static_cast<std::uint32_t>(i); });

        const ExactCrossing isCrossing(1.5);
        std::size_t numPairs = 0;
        for (std::size_t cell = 0; cell < size * size; ++cell)
            for (std::size_t i = vEnds[cell]; i < vEnds[cell + 1]; ++i)
                for (std::size_t j = vEnds[cell]; j < i; ++j) {
                    Segment2 &s = vInput[vSegments[i]], &t = vInput[vSegments[j]];
                    numPairs += isFirstCommonCell(s, t, cell) && isCrossing(s, t);
                }
        return 2 * numPairs;
    }

private:
    struct Range {
        double least, most;
    };
    static Range rangeX(const Segment2& s) { return ordered(s.getSrc().x(), s.getTrg().x()); }
    static Range rangeY(const Segment2& s) { return ordered(s.getSrc().y(), s.getTrg().y()); }
    static Range ordered(double a, double b) { return {std::min(a, b), std::max(a, b)}; }

    std::size_t cellOf(double coordinate) const {
        const double cell = coordinate * static_cast<double>(size);
        return static_cast<std::size_t>(std::clamp(cell, 0.0, static_cast<double>(size - 1)));
    }
    template <class Visit>
    void forEachCell(const Segment2& segment, Visit visit) const {
        const Range x = rangeX(segment), y = rangeY(segment);
        for (std::size_t row = cellOf(y.least); row <= cellOf(y.most); ++row)
            for (std::size_t column = cellOf(x.least); column <= cellOf(x.most); ++column)
                visit(row * size + column);
    }
    bool isFirstCommonCell(const Segment2& s, const Segment2& t, std::size_t cell) const {
        const Range x0 = rangeX(s), x1 = rangeX(t), y0 = rangeY(s), y1 = rangeY(t);
        const double x = std::max(x0.least, x1.least), y = std::max(y0.least, y1.least);
        return x <= std::min(x0.most, x1.most) && y <= std::min(y0.most, y1.most) &&
               cellOf(y) * size + cellOf(x) == cell;
    }

    std::size_t size = 0;
};

}  // namespace

std::unique_ptr<CheckPeer> makeGridChecker() { return std::make_unique<GridChecker>(); }
