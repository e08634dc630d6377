#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "FaceSplitter.h"
#include "mshFile.h"
#include "textFile.h"

using namespace KELMAR_NORVIK2D;

namespace {

class MshReader {
public:
    explicit MshReader(const std::string& path) : in(path, contentOf(path)), splitter(mesh) {}

    IndexedMesh read() {
        readFormat();
        while (in.next()) {
            const std::string section(in.word());
            if (!section.starts_with('$')) in.fail("the beginning of a section expected");
            if (section == "$Nodes")
                bBlocks ? readNodeBlocks() : readNodes();
            else if (section == "$Elements")
                bBlocks ? readElementBlocks() : readElements();
            skipTo("$End" + section.substr(1));
        }
        if (mesh.triangles.empty()) failFile(in.getPath(), "holds no triangles");
        return std::move(mesh);
    }

private:
    void readFormat() {
        if (!in.next() || in.word() != "$MeshFormat") failFile(in.getPath(), "is no Gmsh mesh");
        in.need("the version");
        const std::string version(in.word());
        bBlocks = version == "4.1";
        if (!bBlocks && version != "2" && !version.starts_with("2."))
            in.fail("the version isn't 2.2 or 4.1, which can be read");
        if (in.integer() != 0) in.fail("binary meshes can't be read, only text");
        skipTo("$EndMeshFormat");
    }

    void skipTo(const std::string& end) {
        do in.need(end);
        while (in.word() != end);
    }

    void addNode(std::int64_t tag) {
        const double x = in.number(), y = in.number();
        if (!mIndices.emplace(tag, mesh.points.size()).second) in.fail("a node that was there before");
        mesh.points.emplace_back(x, y);
    }

    void readNodes() {
        in.need("the number of nodes");
        for (std::size_t left = in.count(); left > 0; --left) {
            in.need("a node");
            const std::int64_t tag = in.integer();
            addNode(tag);
        }
    }

    /// Blocks tell all their numbers first, then the coordinates.
    void readNodeBlocks() {
        in.need("the number of blocks");
        std::vector<std::int64_t> vTags;
        for (std::size_t left = in.count(); left > 0; --left) {
            in.need("a block of nodes");
            for (int i = 0; i < 3; ++i) in.integer();  // the entity, and whether there are parameters
            vTags.clear();
            for (std::size_t leftInBlock = in.count(); leftInBlock > 0; --leftInBlock) {
                in.need("the number of a node");
                vTags.push_back(in.integer());
            }
            for (const std::int64_t tag : vTags) {
                in.need("a node");
                addNode(tag);
            }
        }
    }

    void readElements() {
        in.need("the number of elements");
        for (std::size_t left = in.count(); left > 0; --left) {
            in.need("an element");
            in.integer();
            const std::int64_t type = in.integer();
            for (std::size_t leftTags = in.count(); leftTags > 0; --leftTags) in.integer();
            addElement(type);
        }
    }

    void readElementBlocks() {
        in.need("the number of blocks");
        for (std::size_t left = in.count(); left > 0; --left) {
            in.need("a block of elements");
            for (int i = 0; i < 2; ++i) in.integer();  // the entity
            const std::int64_t type = in.integer();
            for (std::size_t leftInBlock = in.count(); leftInBlock > 0; --leftInBlock) {
                in.need("an element");
                in.integer();
                addElement(type);
            }
        }
    }

    /// The rest of the line tells the nodes.
    void addElement(std::int64_t type) {
        constexpr std::int64_t line = 1, triangle = 2, quadrilateral = 3, point = 15, line3 = 8, line4 = 26,
                               line5 = 27, line6 = 28;
        switch (type) {
            case triangle:
                return addFace(3);
            case quadrilateral:
                return addFace(4);
            case point:
            case line:
            case line3:
            case line4:
            case line5:
            case line6:
                return;
            default:
                in.fail("elements of type " + std::to_string(type) +
                        " can't be read, only triangles (2) and quadrilaterals (3)");
        }
    }

    void addFace(std::size_t numCorners) {
        vCorners.clear();
        for (std::size_t i = 0; i < numCorners; ++i) {
            const auto found = mIndices.find(in.integer());
            if (found == mIndices.end()) in.fail("a node that isn't there");
            vCorners.push_back(found->second);
        }
        if (!splitter.add(vCorners))
            in.fail("the element has no inside, or its sides cross or touch each other");
    }

    LineReader in;
    IndexedMesh mesh;
    FaceSplitter splitter;
    bool bBlocks = false;                                    ///< version 4.1
    std::unordered_map<std::int64_t, std::size_t> mIndices;  ///< by the number of a node
    std::vector<std::size_t> vCorners;
};

}  // namespace

IndexedMesh readMsh(const std::string& path) { return MshReader(path).read(); }
