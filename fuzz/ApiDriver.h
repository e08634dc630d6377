#pragma once

#include <cstddef>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Decisions.h"
#include "Norvik_2D.h"
#include "constraintLaws.h"
#include "zoneLaws.h"

/// A law of the library that didn't hold.
class LawBroken : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Uses one triangulation in all the ways that its interface has, as decisions tell, and keeps beside it what there should be.
/// Each operation is checked by what it promises; check() checks all that has to hold at any time. What is broken leaves as
/// LawBroken. Nothing that the library throws is expected here.
///
/// Objects have a character, drawn at first, because promises have limits: where constraints cross, vertices are rounded, and
/// details have to be large; where they don't, everything is exact for all doubles.
class ApiDriver {
public:
    struct Options {
        /// Vertices are removed above that.
        std::size_t mostVertices = 60;
        /// Of what takes long, such as refinement, one in so many is done.
        unsigned rarity = 1;
        /// Insertions so large that they go to threads.
        bool bManyPoints = false;
        /// Told each operation, as far as it is needed to repeat it.
        std::ostream* pTrace = nullptr;
    };

    ApiDriver(Decisions& from_, const Options& options_);
    ~ApiDriver() = default;
    ApiDriver(const ApiDriver&) = delete;
    ApiDriver& operator=(const ApiDriver&) = delete;

    /// One operation.
    void step();
    /// Checks all laws.
    void check();
    /// Whether the mesh has become too large, or has no vertex left that can be removed: time for another one.
    bool isFull() const { return bFull; }

private:
    using Point2 = KELMAR_NORVIK2D::Point2;
    using Segment2 = KELMAR_NORVIK2D::Segment2;
    using Triangle2 = KELMAR_NORVIK2D::Triangle2;
    using Zone2 = KELMAR_NORVIK2D::Zone2;
    using Graph = KELMAR_NORVIK2D::ConstraintGraph2;
    using Record = KELMAR_NORVIK2D::ConstraintSegment2;
    using Strategy = KELMAR_NORVIK2D::ConstraintInsertionStrategy;
    using Segments = std::vector<Segment2>;
    using Triangles = std::vector<Triangle2*>;
    using Polygon = std::vector<Point2>;
    using Coordinates = std::pair<double, double>;

    enum class Character {
        CLEAN,     ///< small numbers with few digits: constraints may cross
        MODERATE,  ///< nearly degenerate points of usual size; no crossings
        EXTREME,   ///< all doubles; no crossings
        MESSY      ///< nearly degenerate points and crossings: nothing but the mesh itself can be relied on
    };
    enum class Growth { NONE, ALLOWED };
    enum class Loss { NONE, OF_FREE_VERTICES };

    struct Action;
    struct Ring {
        Graph* pGraph;
        double area, perimeter;
    };
    /// Triangles, and what is left of that when the mesh changes.
    struct Shape {
        zoneLaws::TriangleSet sTriangles;
        double area, slack;
    };
    struct KnownZone {
        Zone2* pZone;
        std::optional<double> area = {};  ///< that it has to keep
        double slack = 0.0;               ///< of the area
        const Zone2* pFirst = nullptr;    ///< operands
        const Zone2* pSecond = nullptr;
    };

    // What there is to choose from (ApiDriver.cpp)
    Point2 somePoint();
    Segment2 someSegment();
    Polygon somePolygon();
    Point2* someHandle();
    bool isHugeOrTiny() const { return character == Character::EXTREME; }
    bool mayCross() const { return character == Character::CLEAN || character == Character::MESSY; }
    bool isExact() const { return character != Character::MESSY; }
    /// Whether all constraints are edges.
    bool isEnforced() { return pMesh->is2D() && !bWaiting && !bLacking; }

    /// Whether zones and cuts are what they should be, or it doesn't matter whether they are.
    bool isUsable() { return isEnforced() || (pMesh->is2D() && !isExact()); }

    // Points (ApiDriver_points.cpp)
    void insertOne();
    void insertMany();
    void insertArray();
    void insertAndCancel();
    void insertVeryMany();
    void removeOne();
    void shrink();
    void locateOne();
    void locateMany();
    void expectLocated(const Point2& point, Triangle2* pT);
    void noteInserted(const Point2& point, Point2* pVtx);
    void noteRemoved(Point2* pVtx);
    void readVertices(Growth growth, Loss loss);

    // Constraints (ApiDriver_constraints.cpp)
    void addSegments();
    void addRing();
    void apply();
    void applyAndCancel();
    void splitPiece();
    void askGraph();
    bool isAcceptable(const Segment2& segment, Strategy cis) const;
    bool areAcceptable(const Segments& segments, Strategy cis);
    bool isSimple(const Polygon& polygon) const;
    Graph* create(const Segments& segments, Strategy cis, bool bOriented);
    void noteConstraints();
    void noteApplied();

    // Zones and cuts (ApiDriver_zones.cpp)
    void makeZone();
    void combineZones();
    void dropZone();
    void zoneOfTriangles();
    void boundZone();
    void peelZone();
    void unifyZone();
    void cut();
    void cutCookie();
    void expectChain(const Segment2& knife);
    void know(Zone2* pZone, std::optional<double> area = {}, double slack = 0.0);
    Shape shapeOf(const Triangles& vTriangles) const;
    void expectShape(const Zone2* pZone, const Shape& shape);
    void noteBorder(const Zone2* pZone);
    void checkZone(const KnownZone& known);
    Triangles somePatch(std::size_t most);

    // Quality meshes, import and questions (ApiDriver_meshes.cpp)
    void refine();
    void importElsewhere();
    void exportArrays();
    void askMesh();
    void askVertex();
    void mistake();
    void control();
    void beginAnew();
    Zone2* zoneToRefine();

    // Laws and tracing
    void begin();
    void fill(std::size_t numPoints);
    void expect(bool bHolds, const char* law) const {
        if (!bHolds) throw LawBroken(law);
    }
    template <class... T>
    void say(const T&... items) const;
    void checkVertices();
    void checkTriangles();

    Decisions& from;
    Options options;
    std::unique_ptr<KELMAR_NORVIK2D::Norvik_2D> pMesh;
    Character character;
    int rounding;
    HardPoints hardPoints;

    std::map<Coordinates, Point2*> mVertices;
    std::vector<Point2*> vHandles;  ///< the same, to draw from
    std::vector<Point2*> vRemoved;
    zoneLaws::TriangleSet sOnceAlive;
    std::unique_ptr<Demands> pDemands;
    Segments vGiven;
    std::vector<Graph*> vGraphs;
    std::vector<Ring> vRings;
    std::vector<KnownZone> vZones;
    bool bDelaunay = true;     ///< nothing has kept shapes that aren't
    bool bWaiting = false;     ///< constraints aren't edges yet
    bool bLacking = false;     ///< some never will be, as was told
    bool bConforming = false;  ///< there are such constraints
    bool bRefined = false;     ///< there are vertices that refinement made
    bool bDrawnSince = false;  ///< and constraints since
    bool bFull = false;
    int numFutileRemovals = 0;
    unsigned numChecks = 0;
};

/// Hears what the library says on this thread. Messages go nowhere else from its first use on.
class Hearing {
public:
    static void begin();
    static bool heard(const std::string& text);
    /// All since begin().
    static const std::string& all();
};
