#pragma once

#include <string>

#include "fileData.h"

/// The points, lines and polygons of a GeoJSON file: a geometry, a collection of these, a feature or a collection of features.
/// Properties and heights are skipped.
Drawing readGeoJson(const std::string& path);

/// Writes what an output mesh covers: for each region a feature, a MultiPolygon with a polygon for each part that hangs together.
void writeGeoJson(const IndexedMesh& mesh, const std::string& path);
