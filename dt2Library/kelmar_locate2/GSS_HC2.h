#pragma once

#include "norvikExport.h"

/// What the spatial indices are made of.
namespace KELMAR_TOOLS {

/// Hilbert keys of points over a box, as a tree sorts by them: near points mostly have near keys. Nothing is clamped; a point
/// outside the box or on its upper side wraps to the key of its low bits.
class NORVIK2D_EXPORT GSS_HC2 {
public:
    /// Of 0 bits: every key is 0.
    GSS_HC2() noexcept = default;
    /// Keys of `bitLength` bits, half of them for each axis. An odd number, or one above 32, ends the process with exit status 1
    /// and a message.
    GSS_HC2(double minX, double minY, double maxX, double maxY, unsigned bitLength);

    /// Takes over other parameters. What is tested as above is the number of bits that was in force before. Of an odd new number
    /// the last bit isn't used, of more than 32 bits those above.
    void setParams(double minX, double minY, double maxX, double maxY, unsigned bitLength);

    /// The key of a point.
    unsigned getKey(double x, double y) const;

private:
    unsigned bitLength = 0;
    double minX = 0.0;
    double minY = 0.0;
    double scaleX = 0.0;
    double scaleY = 0.0;
};

}  // namespace KELMAR_TOOLS
