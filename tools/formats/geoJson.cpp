#include "geoJson.h"

#include <cmath>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "borders.h"
#include "textFile.h"

using namespace KELMAR_NORVIK2D;
using Json = nlohmann::ordered_json;

namespace {

class GeoJsonReader {
public:
    explicit GeoJsonReader(const std::string& path_) : path(path_) {}

    Drawing read() {
        readObject(parse(), 0);
        return std::move(drawing);
    }

private:
    Json parse() const {
        try {
            return Json::parse(contentOf(path));
        } catch (const Json::exception& reason) {
            // Behind the name of the exception, in brackets.
            const std::string text = reason.what();
            const std::size_t bracket = text.find("] ");
            failFile(path, bracket == std::string::npos ? text : text.substr(bracket + 2));
        }
    }

    [[noreturn]] void fail(const std::string& reason) const {
        const std::string where = numFeatures > 0 ? "feature " + std::to_string(numFeatures) + ": " : "";
        failFile(path, where + reason);
    }

    const Json& member(const Json& object, const char* name) const {
        const auto found = object.find(name);
        if (found == object.end()) fail(std::string("no \"") + name + '"');
        return *found;
    }

    const Json& array(const Json& value, const char* what) const {
        if (!value.is_array()) fail(std::string(what) + " aren't an array");
        return value;
    }

    void readObject(const Json& object, int depth) {
        constexpr int deepest = 32;
        if (depth > deepest) fail("collections are nested too deeply");
        if (!object.is_object()) fail("is no GeoJSON object");
        const Json& type = member(object, "type");
        if (type == "FeatureCollection") {
            for (const Json& feature : array(member(object, "features"), "features"))
                readObject(feature, depth + 1);
        } else if (type == "Feature") {
            ++numFeatures;
            const Json& geometry = member(object, "geometry");
            if (!geometry.is_null()) readObject(geometry, depth + 1);
        } else if (type == "GeometryCollection") {
            for (const Json& geometry : array(member(object, "geometries"), "geometries"))
                readObject(geometry, depth + 1);
        } else {
            readGeometry(type, member(object, "coordinates"));
        }
    }

    void readGeometry(const Json& type, const Json& coordinates) {
        const auto ofEach = [this](void (GeoJsonReader::*read)(const Json&)) {
            return [this, read](const Json& parts) {
                for (const Json& part : array(parts, "coordinates")) (this->*read)(part);
            };
        };
        const std::map<std::string, std::function<void(const Json&)>> readers{
            {"Point", [this](const Json& part) { readPoint(part); }},
            {"MultiPoint", ofEach(&GeoJsonReader::readPoint)},
            {"LineString", [this](const Json& part) { readLine(part); }},
            {"MultiLineString", ofEach(&GeoJsonReader::readLine)},
            {"Polygon", [this](const Json& part) { readPolygon(part); }},
            {"MultiPolygon", ofEach(&GeoJsonReader::readPolygon)}};
        const auto found = type.is_string() ? readers.find(type.get<std::string>()) : readers.end();
        if (found == readers.end()) fail("the type " + type.dump(-1, ' ', true) + " isn't known");
        found->second(coordinates);
    }

    Point2 position(const Json& value) const {
        if (!value.is_array() || value.size() < 2 || !value[0].is_number() || !value[1].is_number())
            fail("a position isn't an array of numbers");
        return {value[0].get<double>(), value[1].get<double>()};
    }

    void readPoint(const Json& value) { drawing.points.push_back(position(value)); }

    void readLine(const Json& positions) {
        if (array(positions, "positions").size() < 2) fail("a line has two positions or more");
        Point2 src = position(positions[0]);
        for (std::size_t i = 1; i < positions.size(); ++i) {
            const Point2 trg = position(positions[i]);
            drawing.segments.emplace_back(src, trg);
            src = trg;
        }
    }

    void readPolygon(const Json& rings) {
        for (const Json& ring : array(rings, "rings")) {
            if (!ring.is_array() || ring.size() < 4) fail("a ring has four positions or more");
            if (position(ring.front()) != position(ring.back())) fail("a ring isn't closed");
            readLine(ring);
        }
        drawing.bPolygons = true;
    }

    const std::string& path;
    Drawing drawing;
    std::size_t numFeatures = 0;
};

Json coordinatesOf(const IndexedMesh& mesh, const std::vector<std::size_t>& ring) {
    Json positions = Json::array();
    const auto add = [&](std::size_t corner) {
        positions.push_back({mesh.points[corner].x(), mesh.points[corner].y()});
    };
    for (const std::size_t corner : ring) add(corner);
    add(ring.front());
    return positions;
}

}  // namespace

Drawing readGeoJson(const std::string& path) { return GeoJsonReader(path).read(); }

void writeGeoJson(const IndexedMesh& mesh, const std::string& path) {
    std::map<double, Json> mPolygons;
    for (const BorderPolygon& polygon : findBorders(mesh)) {
        Json rings = Json::array();
        for (const auto& ring : polygon.rings) rings.push_back(coordinatesOf(mesh, ring));
        mPolygons.try_emplace(polygon.region, Json::array()).first->second.push_back(std::move(rings));
    }
    Json features = Json::array();
    for (auto& [region, polygons] : mPolygons) {
        Json properties = Json::object();
        if (!mesh.regions.empty()) properties["region"] = region;
        features.push_back({{"type", "Feature"},
                            {"properties", std::move(properties)},
                            {"geometry", {{"type", "MultiPolygon"}, {"coordinates", std::move(polygons)}}}});
    }
    TextWriter out(path);
    out << Json{{"type", "FeatureCollection"}, {"features", std::move(features)}}.dump() << '\n';
    out.close();
}
