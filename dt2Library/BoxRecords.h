#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "doublePair.h"

namespace KELMAR_TOOLS {

/// The boxes in the records of a PackedTree. In each record their coordinates lie side by side, from `minX` on: the least ones of
/// all axes, then the greatest ones.
template <unsigned Dimension, class Box_, class Content_, class Item_>
struct BoxRecords {
    using Box = Box_;
    using Content = Content_;
    using Item = Item_;
    using Coordinates = std::array<double, Dimension>;

    static constexpr unsigned dimension = Dimension;

    template <class Record>
    static Coordinates least(const Record& record) {
        return read<Coordinates>(record, 0);
    }
    template <class Record>
    static Coordinates greatest(const Record& record) {
        return read<Coordinates>(record, Dimension);
    }
    static Coordinates center(const Content& content) {
        Coordinates center = least(content);
        const Coordinates other = greatest(content);
        for (unsigned axis = 0; axis < Dimension; ++axis) center[axis] = (center[axis] + other[axis]) * 0.5;
        return center;
    }

    template <class Record>
    static Box boxOf(const Record& record) {
        return read<Box>(record, 0);
    }
    static Item itemOf(const Content& content) {
        Item item;
        item.pObject = content.pObject;
        write(item, boxOf(content));
        return item;
    }

    static void grow(Box& box, const Box& other) {
        Coordinates all[2] = {least(box), greatest(box)};
        const Coordinates low = least(other), high = greatest(other);
        for (unsigned axis = 0; axis < Dimension; ++axis) {
            all[0][axis] = std::min(all[0][axis], low[axis]);
            all[1][axis] = std::max(all[1][axis], high[axis]);
        }
        write(box, all);
    }

    /// Whether the closed boxes have a point in common: without branches, for there is no telling.
    static bool meet(const Item& item, const Box& box) {
        using Pair = KELMAR_NORVIK2D::DoublePair;
        using Answers = KELMAR_NORVIK2D::BitPair;
        const Answers begins = read<Pair>(item, 0) <= read<Pair>(box, Dimension);
        const Answers ends = read<Pair>(box, 0) <= read<Pair>(item, Dimension);
        Answers common = begins & ends;
        if constexpr (Dimension == 3) {
            const Answers last = Pair{item.minZ, box.minZ} <= Pair{box.maxZ, item.maxZ};
            common &= last;
        }
        return KELMAR_NORVIK2D::bitsOf(common) == 3U;
    }

private:
    static constexpr std::size_t size = 2 * Dimension * sizeof(double);
    static_assert(sizeof(Box) == size && offsetof(Box, maxX) == size / 2);
    static_assert(offsetof(Item, maxX) == offsetof(Item, minX) + size / 2);
    static_assert(offsetof(Content, maxX) == offsetof(Content, minX) + size / 2);

    template <class T, class Record>
    static T read(const Record& record, std::size_t place) {
        T value;
        std::memcpy(&value,
                    reinterpret_cast<const char*>(&record) + offsetof(Record, minX) + place * sizeof(double),
                    sizeof(T));
        return value;
    }
    template <class Record, class T>
    static void write(Record& record, const T& box) {
        static_assert(sizeof(T) == size);
        std::memcpy(reinterpret_cast<char*>(&record) + offsetof(Record, minX), &box, size);
    }
};

}  // namespace KELMAR_TOOLS
