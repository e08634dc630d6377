#pragma once

#include <limits>
#include <map>
#include <string>

namespace KELMAR_NORVIK2D {

class Triangle2;

/// Counts values by classes and prints the distribution.
class Histogram {
public:
    explicit Histogram(const std::string& name_) : name(name_) {}

    /// A new class, that ends at `bound` inclusively.
    void addBound(double bound);
    void addVal(double value);
    /// The interior angles of triangles, in degrees by tens.
    static Histogram ofAngles();
    void addAnglesOf(const Triangle2* pT);
    /// Prints mean, least and greatest value and the classes, the first of which is shown from 0 on.
    void show() const;

private:
    std::string name;
    double least = std::numeric_limits<double>::max();
    double greatest = -std::numeric_limits<double>::max();
    double sum = 0.0;
    int count = 0;
    /// From upper bound to count; the last class takes every value.
    std::map<double, int> mBound2Count{{std::numeric_limits<double>::max(), 0}};
};

}  // namespace KELMAR_NORVIK2D
