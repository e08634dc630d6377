#pragma once

#include <functional>
#include <vector>

struct NamedRow {
    const char* name;
    /// Prints the row; returns whether the comparison was fair.
    std::function<bool()> measure;
};

std::vector<NamedRow> constraintRows();
