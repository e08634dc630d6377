#pragma once

#include <array>
#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

#include "Decisions.h"
#include "exactSegments.h"
#include "exactSigns.h"
#include "fault.h"
#include "formats/FaceSplitter.h"

/// A face of bytes against exact arithmetic: the splitter takes those that are simple polygons, and their triangles cover them.
class FaceJudge {
public:
    explicit FaceJudge(Decisions& from) {
        HardPoints points(from.oneIn(2) ? HardPoints::Magnitudes::ALL : HardPoints::Magnitudes::MODERATE);
        const unsigned numCorners = 4 + from.below(9);
        while (mesh.points.size() < numCorners) {
            corners.push_back(mesh.points.size());
            mesh.points.push_back(points.next(from));
        }
    }

    void judge() {
        const bool bTaken = FaceSplitter(mesh).add(corners);
        expectLaw(bTaken == isSimple(),
                  bTaken ? "a face that isn't simple is refused" : "a simple face is taken");
        expectLaw(mesh.triangles.size() == (bTaken ? corners.size() - 2 : 0),
                  "as many triangles as it takes");
        if (bTaken) judgeTriangles();
    }

private:
    using Point2 = KELMAR_NORVIK2D::Point2;
    using Segment2 = KELMAR_NORVIK2D::Segment2;

    void expectLaw(bool bHolds, const char* law) const {
        if (bHolds) return;
        std::ostringstream text;
        text << law << std::hexfloat;
        for (const Point2& point : mesh.points) text << " {" << point.x() << ", " << point.y() << "}";
        expect(false, text.str());
    }

    bool isSimple() {
        const std::size_t n = mesh.points.size();
        const auto side = [&](std::size_t i) { return Segment2(mesh.points[i], mesh.points[(i + 1) % n]); };
        for (std::size_t i = 0; i < n; ++i)
            for (std::size_t j = 0; j < i; ++j) {
                const bool bNeighbours = i == j + 1 || (j == 0 && i == n - 1);
                const auto expected = bNeighbours ? KELMAR_NORVIK2D::SIT_ENDPOINT : KELMAR_NORVIK2D::SIT_NONE;
                if (exactSegments::isPoint(side(i)) ||
                    exactSegments::typeOf(exact, side(i), side(j)) != expected)
                    return false;
            }
        return true;
    }

    /// All run in the direction of the face, and have its area.
    void judgeTriangles() const {
        exactSigns::CommonScale scale;
        for (const Point2& point : mesh.points) scale.note(point);
        const auto area = [&](std::size_t a, std::size_t b, std::size_t c) {
            return exactSigns::doubleArea(scale.exact(mesh.points[a]), scale.exact(mesh.points[b]),
                                          scale.exact(mesh.points[c]));
        };
        mpz_class ofFace = 0, ofTriangles = 0;
        for (std::size_t i = 2; i < corners.size(); ++i) ofFace += area(0, i - 1, i);
        for (const auto& [a, b, c] : mesh.triangles) {
            const mpz_class ofTriangle = area(a, b, c);
            expectLaw(sgn(ofTriangle) == sgn(ofFace), "triangles run in the direction of the face");
            ofTriangles += ofTriangle;
        }
        expectLaw(ofFace == ofTriangles, "triangles cover the face");
    }

    IndexedMesh mesh;
    std::vector<std::size_t> corners;
    ExactReference exact;
};
