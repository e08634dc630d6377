#pragma once

#include <Norvik_2D.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace KELMAR_NORVIK2D;

/// What the pieces of code in the documentation take as given.
struct Given {
    Norvik_2D& mesh;
    std::vector<Point2>& points;
    std::vector<Segment2>& segments;
    std::vector<Segment2>& ring;
    ConstraintGraph2* pGraph;
    Zone2* pZone;
    Zone2* pOther;
    Triangle2* pTriangle;
    Point2* pVertex;
    double size;
};
