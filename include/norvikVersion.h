#pragma once

#include <string>

#include "norvikExport.h"

namespace KELMAR_NORVIK2D {

/// The three numbers of the library that is running, not of these headers.
NORVIK2D_EXPORT int getMajorVersionNumber();
NORVIK2D_EXPORT int getMinorVersionNumber();
NORVIK2D_EXPORT int getRevisionNumber();

/// Whether this is a release build of the library.
NORVIK2D_EXPORT bool isRelease();

/// For instance "Norvik 2D, RELEASE, v1.0.0".
NORVIK2D_EXPORT std::string getNorvik2DVersion();

}  // namespace KELMAR_NORVIK2D
