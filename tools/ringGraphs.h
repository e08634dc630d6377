#pragma once

#include <Norvik_2D.h>

#include <string>
#include <vector>

#include "commands.h"
#include "rings.h"

struct Graphs {
    std::vector<KELMAR_NORVIK2D::ConstraintGraph2*> vRings;
    /// Those of the rings, and that of the loose segments.
    std::vector<KELMAR_NORVIK2D::ConstraintGraph2*> vAll;
};

/// Inserts all points, makes constraints of the rings and the loose segments, and edges of these.
Graphs insertAll(KELMAR_NORVIK2D::Norvik_2D& mesh, const Input& input, const Rings& rings);

/// The complaint about a ring that is no simple polygon.
std::string crossesItself(std::size_t ringIndex);
