#pragma once

#include <Norvik_2D.h>

#include "formats/fileData.h"
#include "subject.h"

/// Takes the triangles of a zone, or all if it is null, out of a mesh for an output file. Each belongs to the region of the last seed
/// from which it can be reached without crossing a constraint; those of none have the attribute 0. The border is among the
/// constraints; of an import it is all of them, for what the library adds inside around holes is none of the file's.
IndexedMesh takeMesh(KELMAR_NORVIK2D::Norvik_2D& mesh, const Subject& subject);
