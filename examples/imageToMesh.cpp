// A photograph of a machine part, which is drawn here: finds its outlines, makes constraints of them and meshes the part.
#include <FloatMtx.h>
#include <Norvik_2D.h>
#include <mtxTools.h>

#include <cmath>
#include <iostream>
#include <vector>

using namespace KELMAR_NORVIK2D;

namespace {

/// A bright plate with a bore, under light from the left.
FloatMtx drawPart() {
    FloatMtx image(160, 100, 0.1F);
    for (int y = 0; y < image.getHeight(); ++y)
        for (int x = 0; x < image.getWidth(); ++x) {
            const bool bPlate = x >= 20 && x < 140 && y >= 15 && y < 85 && x + y < 200;
            const bool bBore = std::hypot(x - 60, y - 48) < 18;
            if (bPlate && !bBore) image.set(x, y, 1.0F - 0.002F * static_cast<float>(x));
        }
    return image;
}

std::vector<std::vector<Point2>> findOutlines(const FloatMtx& image) {
    FloatMtx edges;
    sobelFilter(image, edges);
    float least = 0, steepest = 0;
    edges.getMinMax(least, steepest);
    thresholdHysteresis(edges, 0.2F * steepest, 0.4F * steepest, edges);
    thinPixels(edges);
    pruneChains(edges, 10);  // whatever hangs on the outlines is shorter

    std::vector<std::vector<Point2>> outlines;
    traceChains(edges, outlines);
    for (std::vector<Point2>& outline : outlines) simplifyPolyline(outline, 0.8);
    return outlines;
}

}  // namespace

int main() {
    // Pixels are named from the lower left, so the mesh lies over the picture: each pixel is a square with side 1.
    const FloatMtx image = drawPart();
    const auto outlines = findOutlines(image);
    std::cout << outlines.size() << " outlines\n";

    // What one outline contains, and not two: the plate without its bore.
    Norvik_2D mesh;
    Zone2* pPart = nullptr;
    for (const std::vector<Point2>& outline : outlines) {
        std::vector<Segment2> ring;
        polylinesToSegments({outline}, ring);
        if (!isSimplePolygon(ring)) continue;  // lines may cross themselves when they are simplified
        Zone2* pInside = mesh.createZone(mesh.createConstraint(ring, CIS_CONSTRAINED_DELAUNAY), ZL_INSIDE);
        pPart = pPart == nullptr ? pInside : zoneSymmetricDifference(pPart, pInside);
    }
    if (pPart == nullptr) return 1;
    Zone2* pDomain = pPart->convertToBoundedZone();
    mesh.refine(pDomain, 25, 0.1, 12, true);

    std::cout << "area " << std::lround(pDomain->getArea2D() / 100) * 100 << " pixels, "
              << pDomain->getNumberOfTriangles() << " triangles\n";
    const bool bGood = mesh.checkZoneQuality(pDomain, 25, "part", AcceptExperimentalFeature());
    std::cout << (bGood ? "all angles are met" : "some angles are missed") << '\n';
    pDomain->show("imageToMesh.ps", false, true);
}
