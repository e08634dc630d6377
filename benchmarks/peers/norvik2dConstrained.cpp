#include <functional>

#include "ConstraintPeer.h"
#include "Norvik_2D.h"

namespace {

using namespace KELMAR_NORVIK2D;

class Norvik2dConstrained : public ConstraintPeer {
public:
    void setInput(const SegmentSet& segments) override {
        for (const auto& [from, to] : segments)
            vInput.emplace_back(Point2(from.x, from.y), Point2(to.x, to.y));
    }

    void insertEnds() override {
        std::vector<Point2> ends;
        for (const Segment2& segment : vInput) {
            ends.push_back(segment.getSrc());
            ends.push_back(segment.getTrg());
        }
        pMesh = std::make_unique<Norvik_2D>();
        pMesh->insert(ends);
    }

    void enforce() override { pMesh->createConstraint(vInput, CIS_CONSTRAINED_DELAUNAY); }

    void constrain() override {
        pMesh = std::make_unique<Norvik_2D>();
        enforce();
    }

    std::size_t numberOfVertices() override { return pMesh->numberOfPoints(); }

    std::size_t numberOfConstrainedEdges() override {
        std::vector<Triangle2*> triangles;
        pMesh->getTrianglePointers(triangles);
        std::size_t numEdges = 0;
        for (Triangle2* pTriangle : triangles)
            for (int i = 0; i < 3; ++i) {
                // Of two triangles one counts their edge.
                const bool bOther = std::less<>()(pTriangle->getOppositeTriangle(i), pTriangle);
                if (pTriangle->getOppositeTriangle(i) != nullptr && bOther) continue;
                numEdges += pMesh->isConstraint(pTriangle, i);
            }
        return numEdges;
    }

    void clear() override { pMesh.reset(); }

private:
    std::vector<Segment2> vInput;
    std::unique_ptr<Norvik_2D> pMesh;
};

}  // namespace

std::unique_ptr<ConstraintPeer> makeNorvik2dConstrained() { return std::make_unique<Norvik2dConstrained>(); }
