#include "Norvik_2D.h"

#include <memory>

#include "Dt2.h"
#include "diagnostics.h"
#include "roundingMode.h"
#include "standardOutput.h"

namespace KELMAR_NORVIK2D {

Norvik_2D::Norvik_2D(unsigned int numExpectedVertices) { initNorvik(numExpectedVertices); }

Norvik_2D::~Norvik_2D() { delete pImpl; }

void Norvik_2D::initNorvik(unsigned int numExpectedVertices) {
    // The old triangulation stays if there is no memory for the new one.
    auto pNew = std::make_unique<Dt2>(numExpectedVertices);
    delete pImpl;
    pImpl = pNew.release();
}

int Norvik_2D::setNumCPU(int numCPU) { return pImpl->setNumCPU(numCPU); }
int Norvik_2D::enableMultithreading() { return setNumCPU(0); }
void Norvik_2D::setName(const std::string& name) { pImpl->setName(name); }
std::string Norvik_2D::getName() const { return pImpl->getName(); }

Point2* Norvik_2D::insert(const Point2& point) {
    RoundToNearest nearest;
    return pImpl->insert(point);
}

void Norvik_2D::insert(const std::vector<Point2>& points) {
    RoundToNearest nearest;
    const CancelSwitch::Scope cancellable(pImpl->getCancelSwitch());
    pImpl->insertVector(points, nullptr);
}

void Norvik_2D::insert(const std::vector<Point2>& points, std::vector<Point2*>& handles) {
    RoundToNearest nearest;
    const CancelSwitch::Scope cancellable(pImpl->getCancelSwitch());
    pImpl->insertVector(points, &handles);
}

void Norvik_2D::insert(int numPoints, double* coordinates, Point2** handles) {
    RoundToNearest nearest;
    const CancelSwitch::Scope cancellable(pImpl->getCancelSwitch());
    pImpl->insert(numPoints, coordinates, handles);
}

void Norvik_2D::remove(Point2* pVertex) {
    RoundToNearest nearest;
    pImpl->remove(pVertex);
}

ConstraintGraph2* Norvik_2D::createConstraint(const std::vector<Segment2>& vSegments,
                                              ConstraintInsertionStrategy cis, bool bOrientedSegments) {
    RoundToNearest nearest;
    if (vSegments.empty()) {
        warning("Norvik_2D::createConstraint()", "You have not supplied any segments. Returning NULL!");
        return nullptr;
    }
    return pImpl->createConstraint(vSegments, cis, bOrientedSegments);
}

void Norvik_2D::applyConstraintsAndZones() {
    RoundToNearest nearest;
    if (!is2D()) {
        warning("Norvik2D::applyConstraintsAndZones()",
                "The triangulation is not 2D yet, can't apply the constraints");
        return;
    }
    const CancelSwitch::Scope cancellable(pImpl->getCancelSwitch());
    pImpl->applyConstraintsAndZones();
}

bool Norvik_2D::isConstraint(Point2* p0, Point2* p1) {
    if (p0 == nullptr || p1 == nullptr) {
        warning("Norvik_2D::isConstraint()", "null pointer given, returning false");
        return false;
    }
    return pImpl->isConstraint(p0, p1);
}

bool Norvik_2D::isConstraint(Triangle2* pTriangle, int index) {
    if (pTriangle == nullptr || index < 0 || index > 2) {
        warning("Norvik_2D::isConstraint()", "null pointer or illegal index given, returning false");
        return false;
    }
    return pImpl->isConstraint(pTriangle, index);
}

bool Norvik_2D::isConstraint(Point2* pVertex) {
    if (pVertex == nullptr) {
        warning("Norvik_2D::isConstraint()", "null pointer given, returning false");
        return false;
    }
    return pImpl->isConstraintVertex(pVertex);
}

ConstraintSegment2* Norvik_2D::getConstraintSegment(Point2* p0, Point2* p1) {
    if (p0 == nullptr || p1 == nullptr) {
        warning("Norvik_2D::getConstraintSegment()", "null pointer given, returning NULL");
        return nullptr;
    }
    return pImpl->getConstraintManager()->getAliveConstraintSegment(p0, p1);
}

namespace {

Zone2* warnIfNull(Zone2* pZone, bool bVerbose) {
    if (pZone == nullptr && bVerbose)
        warning("Norvik_2D::createZone(..)", "No zone created, returning NULL (bVerbose==true)");
    return pZone;
}

}  // namespace

Zone2* Norvik_2D::createZone(ConstraintGraph2* pGraph, ZoneLocation zoneLoc, bool bVerbose) {
    return warnIfNull(pImpl->createZone(pGraph, zoneLoc), bVerbose);
}

Zone2* Norvik_2D::createZone(ConstraintGraph2* pGraph, ZoneLocation zoneLoc, const Point2& seed,
                             bool bVerbose) {
    return warnIfNull(pImpl->createZone(pGraph, zoneLoc, seed), bVerbose);
}

Zone2* Norvik_2D::createZone(const std::vector<ConstraintGraph2*>& vGraphs, ZoneLocation zoneLoc,
                             const Point2& seed, bool bVerbose) {
    return warnIfNull(pImpl->createZone(vGraphs, zoneLoc, seed), bVerbose);
}

Zone2* Norvik_2D::createZone(const std::vector<Triangle2*>& vTriangles, bool bVerbose) {
    RoundToNearest nearest;
    return warnIfNull(pImpl->createZone(vTriangles), bVerbose);
}

Zone2* Norvik_2D::createZone_cookieCutter(const std::vector<Segment2>& vSegments, bool bWithConstraints) {
    RoundToNearest nearest;
    return pImpl->createZone_cookieCutter(vSegments, bWithConstraints);
}

void Norvik_2D::deleteZone(Zone2* pZone) { pImpl->deleteZone(pZone); }

void Norvik_2D::refine(Zone2* pZone, double minAngleDegree, double minEdgeLength, double maxEdgeLength,
                       bool bAllowConstraintSplitting) {
    RoundToNearest nearest;
    if (pZone == nullptr) {
        printToStandardError("\nWarning: Norvik_2D::refine(..) has been called with pZone==NULL\n\n");
        return;
    }
    if (minAngleDegree > 30.0) {
        printToStandardError("\nWarning: Norvik_2D::refine(..), minAngleDegree can't be >30\n\n");
        return;
    }
    const CancelSwitch::Scope cancellable(pImpl->getCancelSwitch());
    pImpl->refineClassic(pZone, minAngleDegree, minEdgeLength, maxEdgeLength, bAllowConstraintSplitting);
}

void Norvik_2D::refineAdvanced(MeshGenParams* pParameters) {
    RoundToNearest nearest;
    const CancelSwitch::Scope cancellable(pImpl->getCancelSwitch());
    pImpl->refineAdvanced(pParameters);
}

bool Norvik_2D::checkZoneQuality(Zone2* pZone, double minAngleDegree, const std::string& name,
                                 const AcceptExperimentalFeature& /*accept*/) {
    RoundToNearest nearest;
    return pImpl->checkZoneQuality(pZone, minAngleDegree, name);
}

Zone2* Norvik_2D::importTriangles(std::vector<Point2>& vPoints, bool bReorient, bool bKeepBox) {
    RoundToNearest nearest;
    return pImpl->CAT_importTriangles(vPoints, bReorient, bKeepBox);
}

void Norvik_2D::cutTriangles(const std::vector<Segment2>& vSegments, bool bWithConstraints) {
    RoundToNearest nearest;
    std::vector<ConstraintSegment2*> vPieces;
    pImpl->CUTT_cutTriangles(vSegments, bWithConstraints, vPieces);
}

void Norvik_2D::cutTriangles(const Point2& p0, const Point2& p1, bool bWithConstraints) {
    cutTriangles({Segment2(p0, p1)}, bWithConstraints);
}

Triangle2* Norvik_2D::locate(const Point2& point) {
    RoundToNearest nearest;
    return pImpl->locate(point);
}

void Norvik_2D::locate(const std::vector<Point2>& points, std::vector<Triangle2*>& out) {
    RoundToNearest nearest;
    pImpl->locate(points, out);
}

Triangle2* Norvik_2D::getAdjacentTriangle(Point2* p0, Point2* p1) {
    return pImpl->getAdjacentTriangle(p0, p1);
}

void Norvik_2D::getIncidentTriangles(Point2* pVertex, std::vector<Triangle2*>& out) {
    pImpl->getIncidentTriangles(pVertex, out);
}

void Norvik_2D::getTrianglePointers(std::vector<Triangle2*>& out) { pImpl->getTrianglePointers(out); }
void Norvik_2D::getVertexPointers(std::vector<Point2*>& out) { pImpl->getVertexPointers(out); }
std::size_t Norvik_2D::numberOfPoints() const { return pImpl->numberOfPoints(); }
std::size_t Norvik_2D::numberOfTriangles() const { return pImpl->numberOfTriangles(); }
bool Norvik_2D::is2D() const { return pImpl->is2D(); }

Bbox2 Norvik_2D::computeBoundingBox() {
    RoundToNearest nearest;
    return pImpl->computeBoundingBox();
}

void Norvik_2D::getConvexHull(bool bAllVertices, std::vector<Point2*>& out) {
    RoundToNearest nearest;
    pImpl->getConvexHull(bAllVertices, out);
}

bool Norvik_2D::checkValidity(bool bCheckEmptyCircleProperty, const std::string& msg) {
    RoundToNearest nearest;
    return pImpl->checkValidity(bCheckEmptyCircleProperty, msg);
}

void Norvik_2D::statistics(const std::string& title) {
    RoundToNearest nearest;
    pImpl->statistics(title);
}

Orientation2 Norvik_2D::getOrientation(const Point2& p0, const Point2& p1, const Point2& p2) {
    return getOrientation2_mt(&p0, &p1, &p2);
}

double Norvik_2D::measureTrianguluationTime(std::vector<Point2>& points) {
    RoundToNearest nearest;
    return Dt2(3).measureTrianguluationTime(pImpl->getNumCPU(), points);
}

void Norvik_2D::show(const std::string& fileName, bool bWithConstraints) {
    RoundToNearest nearest;
    pImpl->show(fileName, bWithConstraints);
}

void Norvik_2D::show(Visualizer2* pVisualizer, bool bWithConstraints) {
    RoundToNearest nearest;
    pImpl->show(pVisualizer, bWithConstraints);
}

void Norvik_2D::writeObj(const std::string& fileName) { writeObj(fileName, nullptr); }

void Norvik_2D::writeObj(const std::string& fileName, Zone2* pZone) {
    RoundToNearest nearest;
    pImpl->writeObj(fileName, pZone);
}

void Norvik_2D::writeWebScene(const char* dirname) { writeWebScene(dirname, nullptr); }

void Norvik_2D::writeWebScene(const char* dirname, Zone2* pZone) {
    RoundToNearest nearest;
    pImpl->writeWebScene(dirname, pZone);
}

void Norvik_2D::exportMesh(MeshArrays& out) { pImpl->exportMesh(out); }
void Norvik_2D::exportMesh(Zone2* pZone, MeshArrays& out) { pImpl->exportMesh(pZone, out); }

void Norvik_2D::requestCancel() { pImpl->getCancelSwitch().request(); }
bool Norvik_2D::wasCancelled() const { return pImpl->getCancelSwitch().wasCancelled(); }

void Norvik_2D::subscribe(MsgType type, MsgBase* pSubscriber) {
    if (pSubscriber == nullptr) {
        warning("Norvik_2D::subscribe()", "pSubscriber==NULL, nothing done");
        return;
    }
    pImpl->subscribe(type, pSubscriber);
}

void Norvik_2D::unsubscribe(MsgType type, MsgBase* pSubscriber) { pImpl->unsubscribe(type, pSubscriber); }
void Norvik_2D::setDev(const std::string& key, int i, double d) { pImpl->setDev(key, i, d); }

/// A door for debugging that released versions keep shut.
void Norvik_2D::internal(int i, int j, std::string /*text*/) {
    if (i == j && (i == 1 || i == 2)) print("internal debug is disbled in your version\n");
}

Dt2* Norvik_2D::getImpl() { return pImpl; }

}  // namespace KELMAR_NORVIK2D
