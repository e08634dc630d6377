// Zones are examined: angles and shapes, or the growth from triangle to triangle.
#include <gtest/gtest.h>

#include <filesystem>

#include "captureOutput.h"
#include "meshDomains.h"

using namespace meshDomains;

namespace {

constexpr double growth = unlimited;  // stands for the other test
const Domain needle{"needle", {{{0, 0}, {1, 0}, {0.5, std::sqrt(399.75)}}}};

}  // namespace

TEST(ZoneQuality, ZonesPassOrAreToldAboutAndDrawn) {
    const struct {
        std::string name;
        Domain domain;
        double limit;
        bool bPasses;
        std::vector<std::string> files = {}, told = {};
    } cases[] = {
        {"good", equilateral, 20, true},
        {"bad",
         equilateral,
         61,
         false,
         {"bad_c0.con", "Dt2_checkZoneQuality_bad.ps"},
         {"HHH, Norvik2D::checkZoneQuality(bad): angle(2)=60, oppLen=10 (aspect=1)\n",
          "Norvik2D writes constraints to bad[constraintnumber].con\n",
          "Norvik2D::checkZoneQuality() message: numTriangles: 1, worst degree=60\n" + std::string(39, '-') +
              "\n"}},
        {"needle",
         needle,
         0,
         false,
         {"Dt2_checkZoneQuality_needle.ps"},
         {"HHH: Bad Aspect 20 for triangle ",
          "(needle): angle(0)=", "(needle): angle(1)=", "(needle): angle(2)="}},
        {"drawn", equilateral, -999, true, {"drawn.ps"}},
        {"drawnNeedle", needle, -999, false, {"drawnNeedle.ps", "Dt2_checkZoneQuality_drawnNeedle.ps"}},
        {"binary", needle, -1000, true, {"binary_c0_con.bin"}},
        {"even", kite(1, 2.99, false), growth, true},
        {"grown",
         kite(1, 3.5, false),
         growth,
         false,
         {"badZonegrown.ps"},
         {"Dt2::checkZoneQuality(), WARNING: Bad grow factor, area=3.5, neigArea=1, grow=3.5",
          "Have no pCSeg there\n"}},
        {"walled",
         kite(1, 3.5, true),
         growth,
         false,
         {"badZonewalled.ps"},
         {"Area in associated pCSeg is: 1.79769e+308\n"}},
        {"small", kite(0.2, 3.5, true), growth, true},
        {"alone",
         {"", {{{0, 0}, {10, 0}, {10, 10}, {0, 10}, {1, 5}}}},
         growth,
         true},  // small ones are outside
        {"shapeless", needle, growth, true},
    };
    for (const auto& [name, domain, limit, bPasses, files, told] : cases) {
        SCOPED_TRACE(name);
        Meshed meshed(domain);
        for (const std::string& file : files) std::filesystem::remove(file);
        CaptureOutput output;
        EXPECT_EQ(meshed.mesh.checkZoneQuality(meshed.pZone, limit, name, {}), bPasses);
        for (const std::string& text : told) EXPECT_TRUE(output.told(text)) << text << "\n" << output.out();
        EXPECT_EQ(output.told("HHH"), !bPasses && limit != growth) << output.out();
        EXPECT_EQ(output.out().empty(), files.empty()) << output.out();
        for (const std::string& file : files) EXPECT_NE(contentOf(file), "") << file;
        EXPECT_EQ(meshed.faults(), "");
    }
}

TEST(ZoneQuality, AnEmptyZonePasses) {
    Norvik_2D mesh;
    mesh.insert(box(0, 0, 1, 1));
    Zone2* const pAll = mesh.createZone(nullptr, ZL_GLOBAL);
    for (const double limit : {60.0, growth})
        EXPECT_TRUE(mesh.checkZoneQuality(zoneDifference(pAll, pAll), limit, "empty", {}));
}
