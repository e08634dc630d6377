#pragma once

#include <string>
#include <vector>

#include "FloatMtx.h"
#include "Point2.h"
#include "Segment2.h"
#include "norvikExport.h"

/// The way from a picture to constraints: edges by sobelFilter() and thresholdHysteresis(), lines one pixel wide by thinPixels() and
/// pruneChains(), polylines by traceChains() and simplifyPolyline(), segments by polylinesToSegments().
///
/// Pixels of a value other than 0 are set, beyond the border none is. Set pixels hang together by sides and corners, the others
/// by sides. A link joins two set pixels with a common side; or with a common corner only, unless a set pixel has a side in
/// common with both. An end has one link, a junction three or more.
namespace KELMAR_NORVIK2D {

/// The length of the gradient by Sobel's two 3x3 kernels, which aren't scaled: a straight step from 0 to 1 has the magnitude 4. Beyond
/// the border its pixels are repeated. The direction is where values increase, in degrees counterclockwise from the x axis, -180
/// to 180, and 0 where there is no gradient. The results are replaced; either may be `in` itself, but they
/// mustn't be the same (assertion). A NaN spreads to the pixels around it.
NORVIK2D_EXPORT void sobelFilter(const FloatMtx& in, FloatMtx& magnitude,
                                 FloatMtx* pDirectionDegree = nullptr);

/// Sets pixels to 1 where `in` has `high` or more, or `low` or more and is joined to such a pixel, by sides and corners, through pixels
/// of `low` or more; others to 0. If `low` exceeds `high`, that is a warning, and `high` counts for both. NaN is never enough.
/// `out` is replaced, and may be `in` itself.
NORVIK2D_EXPORT void thresholdHysteresis(const FloatMtx& in, float low, float high, FloatMtx& out);

/// Thins set pixels to lines of one pixel's width along their middle, by setting others to 0; those that stay keep their values. What
/// hangs together stays so, holes stay holes, and a pixel with a single set one around it stays. A second call changes nothing.
NORVIK2D_EXPORT void thinPixels(FloatMtx& inOut);

/// Sets to 0, of thinned pixels, each branch from an end to the next junction, and each line from end to end, that has less than
/// `minLength` pixels; the junction isn't one of the branch's. All that are too short at a time go at once, and what of their
/// junctions is needless then; whatever is left may be too short in turn, until nothing changes. Closed loops stay.
NORVIK2D_EXPORT void pruneChains(FloatMtx& inOut, int minLength);

/// Appends polylines through the centres, (x+0.5,y+0.5), of thinned pixels, each link once: first those from ends and junctions to
/// the next such pixel, where the pixels come row by row from the bottom, left to right, and their links counterclockwise from the
/// one to the right; then closed loops without junctions, with their first pixel again as the last. Single pixels without links give
/// nothing.
NORVIK2D_EXPORT void traceChains(const FloatMtx& in, std::vector<std::vector<Point2>>& vvOut);

/// Drops inner points that are no further than `tolerance` from the segment that takes their place (Douglas and Peucker's way);
/// without a tolerance above 0, those exactly on the segment between their neighbours, which tips of spikes aren't. First and last
/// stay, and of a closed line, whose first equals its last, four entries, if there are so many. Lines may cross themselves and each
/// other afterwards. Coordinates are finite.
NORVIK2D_EXPORT void simplifyPolyline(std::vector<Point2>& inOut, double tolerance);

/// Appends the segments between consecutive points, without those of no length.
NORVIK2D_EXPORT void polylinesToSegments(const std::vector<std::vector<Point2>>& vvLines,
                                         std::vector<Segment2>& vSegments);

/// Writes a Windows bitmap with 24 bits a pixel, `minVal` black and `maxVal` white, values between in proportion, those beyond clamped.
/// Exchanged values give the negative. If they are equal, what exceeds them is white. NaN is black. False, after a message
/// on standard output, if the file can't be written, as one of more than 4 GB can't.
NORVIK2D_EXPORT bool writeBMP(const std::string& path, const FloatMtx& mtx, float minVal, float maxVal);

}  // namespace KELMAR_NORVIK2D
