#pragma once

#include <array>
#include <string_view>

namespace KELMAR_NORVIK2D {

/// A file of the folder viewer/, as it was when the library was built.
struct ViewerFile {
    std::string_view name;
    std::string_view text;
};

constexpr std::size_t numViewerFiles = 8;
extern const std::array<ViewerFile, numViewerFiles> viewerFiles;

}  // namespace KELMAR_NORVIK2D
