#include <algorithm>
#include <memory>

#include "Norvik_2D.h"
#include "Peer.h"

namespace {

using namespace KELMAR_NORVIK2D;

std::vector<Point2> convert(const PointSet& points) {
    std::vector<Point2> converted;
    converted.reserve(points.size());
    for (const auto& [x, y] : points) converted.emplace_back(x, y);
    return converted;
}

class Norvik2dPeer : public Peer {
public:
    explicit Norvik2dPeer(int numThreads_) : numThreads(numThreads_) {}

    void setInput(const PointSet& points) override { vInput = convert(points); }
    void setQueries(const PointSet& queries) override { vQueries = convert(queries); }

    void chooseVertices(const std::vector<std::size_t>& ranks) override {
        std::vector<Point2*> vSorted;
        pMesh->getVertexPointers(vSorted);
        std::sort(vSorted.begin(), vSorted.end(), [](const Point2* a, const Point2* b) {
            return a->x() < b->x() || (a->x() == b->x() && a->y() < b->y());
        });
        vChosen.clear();
        for (const std::size_t rank : ranks) vChosen.push_back(vSorted.at(rank));
    }

    void insert() override {
        pMesh = std::make_unique<Norvik_2D>();
        pMesh->setNumCPU(numThreads);
        pMesh->insert(vInput);
    }

    std::size_t locateQueries() override {
        std::size_t numInside = 0;
        for (const Point2& query : vQueries) numInside += pMesh->locate(query) != nullptr;
        return numInside;
    }

    void removeChosen() override {
        for (Point2* pVertex : vChosen) pMesh->remove(pVertex);
    }

    std::size_t numberOfTriangles() const override { return pMesh->numberOfTriangles(); }
    void clear() override { pMesh.reset(); }

private:
    int numThreads;
    std::vector<Point2> vInput, vQueries;
    std::vector<Point2*> vChosen;
    std::unique_ptr<Norvik_2D> pMesh;
};

}  // namespace

std::unique_ptr<Peer> makeNorvik2d() { return std::make_unique<Norvik2dPeer>(1); }
std::unique_ptr<Peer> makeNorvik2dWithTwoThreads() { return std::make_unique<Norvik2dPeer>(2); }
