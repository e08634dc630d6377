#pragma once

#include <Norvik_2D.h>

#include <vector>

#include "commands.h"
#include "ringGraphs.h"

/// What an odd number of rings contains.
std::vector<KELMAR_NORVIK2D::Triangle2*> findOddlyEnclosed(
    KELMAR_NORVIK2D::Norvik_2D& mesh, const std::vector<KELMAR_NORVIK2D::ConstraintGraph2*>& vRings);

/// What the constraints enclose, without what can be reached from the holes. Wherever the hull is open, all goes that can be
/// reached from there.
std::vector<KELMAR_NORVIK2D::Triangle2*> findEnclosed(KELMAR_NORVIK2D::Norvik_2D& mesh,
                                                      const std::vector<KELMAR_NORVIK2D::Point2>& holes);

/// A rings' complaint (BadInput) if there is none, or one that crosses itself.
void checkRings(const std::string& path, const Rings& rings);

/// A zone of these triangles; a std::runtime_error if one is too thin for that.
KELMAR_NORVIK2D::Zone2* makeZone(KELMAR_NORVIK2D::Norvik_2D& mesh,
                                 const std::vector<KELMAR_NORVIK2D::Triangle2*>& vTriangles,
                                 const std::string& path);

/// Triangulates what a file of segments holds, and makes a zone of its domain: of a .poly file what it encloses, of others what an
/// odd number of rings contains. `rings` is replaced by the rings that were found, for which a .poly file isn't searched. BadInput
/// if there is no domain.
KELMAR_NORVIK2D::Zone2* makeDomain(KELMAR_NORVIK2D::Norvik_2D& mesh, const Input& input, Rings& rings,
                                   const std::string& path);
