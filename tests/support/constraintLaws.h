#pragma once

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "ConstraintMgr.h"
#include "Dt2.h"
#include "Norvik_2D.h"
#include "meshLaws.h"

/// The segments that a mesh was asked for, and the laws that constraints obey. What they should be is followed from the
/// segments down their trees with public getters only, and then compared with what the mesh says.
class Demands {
public:
    using Point2 = KELMAR_NORVIK2D::Point2;
    using Segment2 = KELMAR_NORVIK2D::Segment2;
    using Record = KELMAR_NORVIK2D::ConstraintSegment2;
    using Graph = KELMAR_NORVIK2D::ConstraintGraph2;
    using Pair = KELMAR_NORVIK2D::VertexPair2;
    using Ends = std::pair<Point2*, Point2*>;

    explicit Demands(KELMAR_NORVIK2D::Norvik_2D& mesh_) : mesh(mesh_) {}

    Graph* create(const std::vector<Segment2>& segments, KELMAR_NORVIK2D::ConstraintInsertionStrategy cis,
                  bool bOriented = false) {
        Graph* pGraph = mesh.createConstraint(segments, cis, bOriented);
        if (pGraph != nullptr) vDemands.push_back({pGraph, segments, bOriented});
        return pGraph;
    }

    /// What is wrong; empty if nothing is. Records that still wait, or were given up with a warning, needn't be edges.
    std::string check(bool bEnforced = true) {
        faults.str("");
        numFaults = 0;
        sPieces.clear();
        mOwners.clear();
        readMesh();
        for (const Demand& demand : vDemands) checkDemand(demand);
        for (const auto& [pRecord, sOwners] : mOwners)
            expect(pRecord->getNumberOfOwners() == sOwners.size() ||
                       (!bAlone && pRecord->getNumberOfOwners() > sOwners.size()),
                   "records have all their owners, and no others", pRecord);
        checkBooks();
        if (bEnforced)
            for (const Pair& piece : sPieces)
                expect(sEdges.count(piece) != 0, "pieces are edges",
                       mesh.getConstraintSegment(piece.getVtx0(), piece.getVtx1()));
        return faults.str() + lawsBroken(mesh);
    }

    /// From now on there are constraints too that weren't created here.
    void noteOthers() { bAlone = false; }
    /// How far pieces may be off the line of their segment, but for rounding.
    void setSlack(double slack_) { slack = slack_; }

    std::size_t getNumPieces() const { return sPieces.size(); }
    const std::set<Pair>& getPieces() const { return sPieces; }

    static Ends directedEnds(const Graph* pGraph, const Record* pRecord) {
        const Ends ends(pRecord->getSrc(), pRecord->getTrg());
        return pGraph->isReverse(pRecord) ? Ends(ends.second, ends.first) : ends;
    }

private:
    using Records = std::vector<Record*>;
    struct Demand {
        Graph* pGraph;
        std::vector<Segment2> segments;
        bool bOriented;
    };

    void expect(bool bHolds, const char* law, const Record* pWhere = nullptr) {
        constexpr int mostFaultsTold = 5;
        if (bHolds || ++numFaults > mostFaultsTold) return;
        faults.precision(17);
        faults << law;
        if (pWhere != nullptr) faults << " at " << *pWhere->getSrc() << "-" << *pWhere->getTrg();
        faults << "; ";
    }

    void readMesh() {
        std::vector<Point2*> vVertices;
        mesh.getVertexPointers(vVertices);
        mVertices.clear();
        for (Point2* pVtx : vVertices) mVertices[{pVtx->x(), pVtx->y()}] = pVtx;
        vTriangles.clear();
        mesh.getTrianglePointers(vTriangles);
        sEdges.clear();
        for (const auto* pT : vTriangles)
            for (int i = 0; i < 3; ++i)
                sEdges.emplace(pT->getCorner((i + 1) % 3), pT->getCorner((i + 2) % 3));
    }

    Point2* vertexAt(const Point2& point) const {
        const auto found = mVertices.find({point.x(), point.y()});
        return found == mVertices.end() ? nullptr : found->second;
    }

    void checkDemand(const Demand& demand) {
        const Graph* pGraph = demand.pGraph;
        Records vRoots;
        pGraph->getOriginalConstraintSegments(vRoots);
        std::map<Pair, Record*> mRoots;
        std::map<Record*, Point2*> mStart;
        for (Record* pRoot : vRoots) mRoots[Pair(pRoot->getSrc(), pRoot->getTrg())] = pRoot;
        std::set<Pair> sGiven;
        std::size_t numGiven = 0;
        for (const Segment2& segment : demand.segments) {
            if (segment.getSrc() == segment.getTrg()) continue;
            Point2 *const pSrc = vertexAt(segment.getSrc()), *const pTrg = vertexAt(segment.getTrg());
            expect(pSrc != nullptr && pTrg != nullptr, "ends of segments are vertices");
            if (pSrc == nullptr || pTrg == nullptr) continue;
            expect(mesh.isConstraint(pSrc) && mesh.isConstraint(pTrg), "ends are ends of constraints");
            const Pair pair(pSrc, pTrg);
            ++numGiven;
            sGiven.insert(pair);
            const auto root = mRoots.find(pair);
            expect(root != mRoots.end(), "graphs know their segments");
            if (root == mRoots.end()) continue;
            // The first direction stands.
            mStart.emplace(root->second, demand.bOriented ? pSrc : root->second->getSrc());
        }
        expect(sGiven.size() == mRoots.size(), "graphs have no other segments");
        expect(pGraph->isOriented() == (demand.bOriented || pGraph->isPolygon()),
               "graphs are oriented by input or as a ring");
        Tree tree{pGraph, {}, {}, {}, {}, false};
        for (Record* pRoot : vRoots) {
            const bool bTurned = pGraph->isPolygon() && !demand.bOriented;
            follow(tree, pRoot, bTurned ? directedEnds(pGraph, pRoot).first : mStart[pRoot], *pRoot);
        }
        for (const auto& [pRecord, sRoots] : tree.mRoots) {
            Records vTold(1);  // appended to
            pGraph->getOriginalSegments(pRecord, vTold);
            expect(std::equal(vTold.begin() + 1, vTold.end(), sRoots.begin(), sRoots.end()),
                   "graphs know of what each piece is a part", pRecord);
        }
        checkChain(tree, numGiven == sGiven.size());
        // Only an oriented graph answers for directions.
        if (!pGraph->isOriented() || tree.bShared) return;
        for (const auto& [pRecord, pStart] : tree.mStart)
            expect(directedEnds(pGraph, pRecord).first == pStart, "directions are as first given", pRecord);
        if (numGiven == sGiven.size()) checkWalk(tree, pGraph->isPolygon() && !demand.bOriented);
    }

    /// All that hangs on the segments of a graph.
    struct Tree {
        const Graph* pGraph;
        std::map<Record*, Point2*> mStart;            ///< where each record begins
        std::map<Record*, std::set<Record*>> mRoots;  ///< the segments that each record is a part of
        Records vPieces;                              ///< in the direction of travel
        std::vector<Point2*> vEnds;                   ///< two for each piece
        /// Segments that overlap share pieces, which they may want in different directions. The last one has its way.
        bool bShared;
    };

    /// Takes in the pieces of a record that begins at `pFrom`.
    void follow(Tree& tree, Record* pRecord, Point2* pFrom, Record& root) {
        tree.mRoots[pRecord].insert(&root);
        mOwners[pRecord].insert(tree.pGraph);
        if (!tree.mStart.emplace(pRecord, pFrom).second) tree.bShared = true;
        Point2* const pTo = pFrom == pRecord->getSrc() ? pRecord->getTrg() : pRecord->getSrc();
        expect(tree.pGraph->dbg_hasDirection(pRecord), "graphs know the direction of each piece", pRecord);
        expect(tree.pGraph->isConstraint(pRecord) == pRecord->isAlive() &&
                   tree.pGraph->isConstraint(pTo, pFrom) == pRecord->isAlive(),
               "alive pieces are the graph's constraints", pRecord);
        expect(mesh.getConstraintSegment(pTo, pFrom) == (pRecord->isAlive() ? pRecord : nullptr),
               "alive records are handed out", pRecord);
        if (pRecord->isAlive()) {
            sPieces.emplace(pFrom, pTo);
            tree.vPieces.push_back(pRecord);
            tree.vEnds.insert(tree.vEnds.end(), {pFrom, pTo});
            return;
        }
        Record *pChild0 = nullptr, *pChild1 = nullptr;
        Point2* pSplit = nullptr;
        pRecord->getChildrenAndSplitPoint(pChild0, pChild1, pSplit);
        const bool bComplete = pChild0 != nullptr && pChild1 != nullptr && pSplit != nullptr;
        expect(bComplete, "dead records have children", pRecord);
        if (!bComplete) return;
        expect(Pair(pChild0->getSrc(), pChild0->getTrg()) == Pair(pRecord->getSrc(), pSplit) &&
                   Pair(pChild1->getSrc(), pChild1->getTrg()) == Pair(pRecord->getTrg(), pSplit),
               "children join the ends to the split vertex, that of the source first", pRecord);
        expect(isNear(root, *pSplit), "pieces stay at the line of their segment", &root);
        const bool bForward = pFrom == pRecord->getSrc();
        follow(tree, bForward ? pChild0 : pChild1, pFrom, root);
        follow(tree, bForward ? pChild1 : pChild0, pSplit, root);
    }

    /// A crossing is rounded, or taken as an end close to it.
    bool isNear(const Record& root, const Point2& point) const {
        using Wide = long double;
        const Point2 &src = *root.getSrc(), &trg = *root.getTrg();
        const double most = std::max({std::fabs(src.x()), std::fabs(src.y()), std::fabs(trg.x()),
                                      std::fabs(trg.y()), std::fabs(point.x()), std::fabs(point.y())});
        const Wide tolerance = slack + 1000.0L * (Wide(most) - std::nextafter(most, 0.0));
        const Wide dx = Wide(trg.x()) - src.x(), dy = Wide(trg.y()) - src.y();
        const Wide cross = dx * (Wide(point.y()) - src.y()) - dy * (Wide(point.x()) - src.x());
        return std::fabs(cross) <= tolerance * std::hypot(dx, dy);
    }

    /// With a segment given repeatedly the chain has its pieces repeatedly.
    void checkChain(const Tree& tree, bool bAllDifferent) {
        Records vChain(3), vExpected = tree.vPieces, vSorted;
        tree.pGraph->getAliveConstraintChain(vChain);
        expect(!bAllDifferent || vChain.size() == vExpected.size(), "the chain has each piece once");
        tree.pGraph->getChildConstraintSegments(vSorted);
        for (Records* pRecords : {&vChain, &vExpected}) KELMAR_NORVIK2D::oneInstance(*pRecords);
        expect(vChain == vExpected, "the chain has all pieces");
        expect(vSorted == vExpected, "child segments are the pieces by address");
    }

    void checkWalk(const Tree& tree, bool bClosed) {
        Records vChain;
        std::vector<Point2*> vPolygon;
        tree.pGraph->getAliveConstraintChain(vChain);
        tree.pGraph->getPolygonVertices(vPolygon);
        expect(vChain == tree.vPieces, "the chain has the pieces in order");
        expect(vPolygon == tree.vEnds, "polygon vertices are the directed ends of the chain");
        for (std::size_t i = 0; bClosed && i < vPolygon.size(); i += 2)
            expect(vPolygon[i + 1] == vPolygon[(i + 2) % vPolygon.size()], "polygons are closed walks");
    }

    void checkBooks() {
        Records vAlive;
        mesh.getImpl()->getConstraintManager()->getAliveConstraintSegments(vAlive);
        std::vector<Pair> vAlivePairs;
        for (const Record* pRecord : vAlive) vAlivePairs.emplace_back(pRecord->getSrc(), pRecord->getTrg());
        expect(std::is_sorted(vAlivePairs.begin(), vAlivePairs.end()) &&
                   std::includes(vAlivePairs.begin(), vAlivePairs.end(), sPieces.begin(), sPieces.end()) &&
                   (!bAlone || vAlivePairs.size() == sPieces.size()),
               "the alive records are the pieces, by their ends' addresses");
        for (auto* pT : vTriangles)
            for (int i = 0; i < 3; ++i) {
                Point2 *const p = pT->getCorner((i + 1) % 3), *const q = pT->getCorner((i + 2) % 3);
                const bool bPiece = std::binary_search(vAlivePairs.begin(), vAlivePairs.end(), Pair(p, q));
                expect(mesh.isConstraint(pT, i) == bPiece && mesh.isConstraint(p, q) == bPiece,
                       "edges are constraints where pieces are");
            }
    }

    KELMAR_NORVIK2D::Norvik_2D& mesh;
    std::vector<Demand> vDemands;
    std::map<std::pair<double, double>, Point2*> mVertices;
    std::vector<KELMAR_NORVIK2D::Triangle2*> vTriangles;
    std::set<Pair> sEdges, sPieces;
    std::map<const Record*, std::set<const Graph*>> mOwners;
    bool bAlone = true;
    double slack = 1e-6;
    int numFaults = 0;
    std::ostringstream faults;
};
