#pragma once

#include "Triangle2.h"

/// Areas of triangles by their side lengths. Callers stand under RoundToNearest.
namespace KELMAR_NORVIK2D {

/// Heron's product, the square of the area. It is NaN where infinite lengths meet, and negative where
/// rounding or the lengths themselves break the triangle inequality.
double heronProduct(double a, double b, double c);

/// The area; 0 for a product that isn't positive. A NaN fails an assertion after a warning, which tells the
/// corners of the triangle if there is one.
double heronArea(double a, double b, double c, const Triangle2* pT);

}  // namespace KELMAR_NORVIK2D
