#include "Histogram.h"

#include <algorithm>
#include <iomanip>
#include <iterator>
#include <locale>
#include <sstream>

#include "Triangle2.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

void Histogram::addBound(double bound) { mBound2Count[bound] = 0; }

// The first class whose bound isn't below the value. Infinity lies beyond the last bound, and goes there too.
void Histogram::addVal(double value) {
    sum += value;
    ++count;
    least = std::min(least, value);
    greatest = std::max(greatest, value);
    const auto found = mBound2Count.lower_bound(value);
    ++(found != mBound2Count.end() ? found : std::prev(found))->second;
}

Histogram Histogram::ofAngles() {
    Histogram histogram("INTERIOR ANGLES");
    for (int bound = 10; bound <= 180; bound += 10) histogram.addBound(bound);
    return histogram;
}

void Histogram::addAnglesOf(const Triangle2* pT) {
    for (int i = 0; i < 3; ++i) addVal(pT->getInteriorAngle2D(i));
}

void Histogram::show() const {
    if (count == 0) {
        print("Empty histogram [ " + name + " ]\n");
        return;
    }
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "   " << name << " (avg=" << sum / count << " , min=" << least << ", max=" << greatest << "):\n"
         << std::setprecision(5);

    double lowerBound = 0.0;
    for (const auto& [upperBound, number] : mBound2Count) {
        text << "   " << std::setw(lowerBound < 1.0 ? 3 : 1) << lowerBound << " - ";
        if (upperBound == std::numeric_limits<double>::max())
            text << "  max: ";
        else
            text << upperBound << ": ";
        text << number << "\n";
        lowerBound = upperBound;
    }
    print(text.str());
}

}  // namespace KELMAR_NORVIK2D
