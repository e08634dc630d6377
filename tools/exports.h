#pragma once

#include <Norvik_2D.h>

#include <string>

#include "formats/mshFile.h"
#include "subject.h"

/// The complaint about a file name that tells no format that can be written; empty if there is none.
std::string complaintAboutOutput(const std::string& path);

/// Writes a mesh, or the zone of it, to files of the formats that the names tell.
class Exporter {
public:
    Exporter(KELMAR_NORVIK2D::Norvik_2D& mesh_, const Subject& subject_);

    const IndexedMesh& getTriangles() const { return triangles; }
    void write(const std::string& path, MshVersion mshVersion) const;

private:
    KELMAR_NORVIK2D::Norvik_2D& mesh;
    const Subject& subject;
    IndexedMesh triangles;
};

/// Writes a mesh, or the zone of it, to all files that the options tell, and prints their names.
void exportTo(KELMAR_NORVIK2D::Norvik_2D& mesh, const Subject& subject, const Options& options);

/// Writes the folder that shows the mesh, or the zone of it, in a browser.
void writeScene(KELMAR_NORVIK2D::Norvik_2D& mesh, const Subject& subject, const std::string& folder);
