#pragma once

#include <string>

#include "fileData.h"

/// The points, lines and polygons of a shapefile; heights and measures are skipped. BadInput too if the program was built without
/// shapelib.
Drawing readShape(const std::string& path);
