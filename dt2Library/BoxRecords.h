#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "doublePair.h"

namespace KELMAR_TOOLS {

/// The boxes in the records of a PackedTree: their coordinates are the same members in all of them.
template <unsigned Dimension, class Box_, class Content_, class Item_>
struct BoxRecords {
    using Box = Box_;
    using Content = Content_;
    using Item = Item_;
    using Coordinates = std::array<double, Dimension>;

    static constexpr unsigned dimension = Dimension;

    static Coordinates least(const Box& box) {
        Coordinates least;
        for (unsigned axis = 0; axis < Dimension; ++axis) least[axis] = box.*sides<Box>[axis];
        return least;
    }
    static Coordinates greatest(const Box& box) {
        Coordinates greatest;
        for (unsigned axis = 0; axis < Dimension; ++axis) greatest[axis] = box.*sides<Box>[Dimension + axis];
        return greatest;
    }
    static Coordinates center(const Content& content) {
        Coordinates center;
        for (unsigned axis = 0; axis < Dimension; ++axis)
            center[axis] = (content.*sides<Content>[axis] + content.*sides<Content>[Dimension + axis]) * 0.5;
        return center;
    }

    static Item itemOf(const Content& content) {
        Item item;
        item.pObject = content.pObject;
        for (unsigned i = 0; i < 2 * Dimension; ++i) item.*sides<Item>[i] = content.*sides<Content>[i];
        return item;
    }

    /// So that it contains the box of the record.
    template <class Record>
    static void grow(Box& box, const Record& record) {
        for (unsigned i = 0; i < Dimension; ++i)
            box.*sides<Box>[i] = std::min(box.*sides<Box>[i], record.*sides<Record>[i]);
        for (unsigned i = Dimension; i < 2 * Dimension; ++i)
            box.*sides<Box>[i] = std::max(box.*sides<Box>[i], record.*sides<Record>[i]);
    }

    /// Whether the closed boxes have a point in common: without branches, for there is no telling.
    static bool meet(const Item& item, const Box& box) {
        using KELMAR_NORVIK2D::bitsOf;
        using Pair = KELMAR_NORVIK2D::DoublePair;
        const unsigned begins =
            bitsOf(pairAt(item, offsetof(Item, minX)) <= pairAt(box, offsetof(Box, maxX)));
        const unsigned ends = bitsOf(pairAt(box, offsetof(Box, minX)) <= pairAt(item, offsetof(Item, maxX)));
        unsigned common = begins & ends;
        // The third axis has both questions in one pair.
        if constexpr (Dimension == 3)
            common &= bitsOf(Pair{item.minZ, box.minZ} <= Pair{box.maxZ, item.maxZ});
        return common == 3U;
    }

private:
    /// The least coordinates of all axes, then the greatest ones.
    template <class Record>
    static constexpr auto makeSides() {
        using Sides = std::array<double Record::*, 2 * Dimension>;
        if constexpr (Dimension == 2)
            return Sides{&Record::minX, &Record::minY, &Record::maxX, &Record::maxY};
        else
            return Sides{&Record::minX, &Record::minY, &Record::minZ,
                         &Record::maxX, &Record::maxY, &Record::maxZ};
    }
    template <class Record>
    static constexpr auto sides = makeSides<Record>();

    /// x and y.
    template <class Record>
    static KELMAR_NORVIK2D::DoublePair pairAt(const Record& record, std::size_t offset) {
        static_assert(offsetof(Record, minY) == offsetof(Record, minX) + sizeof(double) &&
                      offsetof(Record, maxY) == offsetof(Record, maxX) + sizeof(double));
        KELMAR_NORVIK2D::DoublePair xy;
        std::memcpy(&xy, reinterpret_cast<const char*>(&record) + offset, sizeof(xy));
        return xy;
    }
};

}  // namespace KELMAR_TOOLS
