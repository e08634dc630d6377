#include "shapeFile.h"

#include "textFile.h"

#ifdef NORVIK2D_SHAPELIB

#include <shapefil.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <system_error>

using namespace KELMAR_NORVIK2D;

namespace {

struct Closer {
    void operator()(SHPInfo* pFile) const { SHPClose(pFile); }
    void operator()(SHPObject* pShape) const { SHPDestroyObject(pShape); }
};

/// The reader makes room for as many records as the index tells: so that has to be there.
void checkIndex(const std::string& path) {
    std::string index = withEnding(path, ".shx");
    if (!std::filesystem::exists(index)) index = withEnding(path, ".SHX");
    const std::string content = contentOf(index);
    constexpr std::size_t headerSize = 100, lengthAt = 24;
    if (content.size() < headerSize) failFile(index, "ends within its header");
    std::size_t numWords = 0;  // of two bytes
    for (std::size_t i = lengthAt; i < lengthAt + 4; ++i)
        numWords = 256 * numWords + static_cast<unsigned char>(content[i]);
    if (2 * numWords > content.size())
        failFile(index, "holds " + std::to_string(content.size()) + " bytes, its header tells " +
                            std::to_string(2 * numWords));
}

class ShapeReader {
public:
    explicit ShapeReader(const std::string& path_) : path(path_) {
        checkIndex(path);
        SAHooks hooks{};
        SASetupDefaultHooks(&hooks);
        hooks.Error = [](const char*) {};  // told below, by us
        pFile.reset(SHPOpenLL(path.c_str(), "rb", &hooks));
        if (pFile == nullptr) failFile(path, "is no shapefile");
    }

    Drawing read() {
        int numShapes = 0;
        SHPGetInfo(pFile.get(), &numShapes, nullptr, nullptr, nullptr);
        for (int i = 0; i < numShapes; ++i) {
            const std::unique_ptr<SHPObject, Closer> pShape(SHPReadObject(pFile.get(), i));
            number = i + 1;
            if (pShape == nullptr) fail("can't be read");
            take(*pShape);
        }
        return std::move(drawing);
    }

private:
    void take(const SHPObject& shape) {
        switch (shape.nSHPType) {
            case SHPT_NULL:
                return;
            case SHPT_POINT:
            case SHPT_POINTZ:
            case SHPT_POINTM:
            case SHPT_MULTIPOINT:
            case SHPT_MULTIPOINTZ:
            case SHPT_MULTIPOINTM:
                for (int i = 0; i < shape.nVertices; ++i) drawing.points.push_back(vertex(shape, i));
                return;
            case SHPT_POLYGON:
            case SHPT_POLYGONZ:
            case SHPT_POLYGONM:
                drawing.bPolygons = true;
                [[fallthrough]];
            case SHPT_ARC:
            case SHPT_ARCZ:
            case SHPT_ARCM:
                return takeParts(shape);
            default:
                fail("is neither of points, of lines nor of polygons");
        }
    }

    void takeParts(const SHPObject& shape) {
        for (int part = 0; part < shape.nParts; ++part) {
            const int first = shape.panPartStart[part];
            const int end = part + 1 < shape.nParts ? shape.panPartStart[part + 1] : shape.nVertices;
            for (int i = first; i + 1 < end; ++i)
                drawing.segments.emplace_back(vertex(shape, i), vertex(shape, i + 1));
        }
    }

    Point2 vertex(const SHPObject& shape, int index) const {
        const double x = shape.padfX[index], y = shape.padfY[index];
        if (!std::isfinite(x) || !std::isfinite(y)) fail("has a coordinate that isn't finite");
        return {x, y};
    }

    [[noreturn]] void fail(const std::string& reason) const {
        failFile(path, "shape " + std::to_string(number) + ' ' + reason);
    }

    const std::string& path;
    std::unique_ptr<SHPInfo, Closer> pFile;
    Drawing drawing;
    int number = 0;
};

}  // namespace

Drawing readShape(const std::string& path) { return ShapeReader(path).read(); }

#else

Drawing readShape(const std::string& path) {
    failFile(path, "this program was built without shapelib, so it can't read shapefiles");
}

#endif
