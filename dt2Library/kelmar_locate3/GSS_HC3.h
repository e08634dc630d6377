#pragma once

#include "norvikExport.h"

namespace KELMAR_TOOLS {

/// Hilbert keys of points over a box in space, as KELMAR_LOCATE3::RTree sorts by them: near points mostly have near keys. Nothing
/// is clamped; a point outside the box or on its upper side wraps to the key of its low bits. An axis along which the box has
/// no extent has one cell.
class NORVIK2D_EXPORT GSS_HC3 {
public:
    /// Of 0 bits: every key is 0.
    GSS_HC3() noexcept = default;
    /// Keys of `bitLength` bits, a third of them for each axis. A number that isn't a multiple of 3, or one above 30, ends the
    /// process with exit status 1 and a message.
    GSS_HC3(double minX, double minY, double minZ, double maxX, double maxY, double maxZ, unsigned bitLength);

    /// Takes over other parameters. What is tested as above is the number of bits that was in force before. Of a new number what
    /// is left when it is divided by 3 isn't used, of more than 30 bits those above.
    void setParams(double minX, double minY, double minZ, double maxX, double maxY, double maxZ,
                   unsigned bitLength);

    /// The key of a point.
    unsigned getKey(double x, double y, double z) const;

private:
    unsigned bitLength = 0;
    double minX = 0.0, minY = 0.0, minZ = 0.0;
    double scaleX = 0.0, scaleY = 0.0, scaleZ = 0.0;
};

}  // namespace KELMAR_TOOLS
