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
        const char* name;
        Domain domain;
        double limit;
        bool bPasses;
        std::vector<std::pair<const char*, std::size_t>> told;  ///< texts, and how often
        std::vector<const char*> files;
    } cases[] = {
        {"good", equilateral, 20, true, {}, {}},
        {"bad",
         equilateral,
         61,
         false,
         {{"HHH: Bad Aspect", 0},
          {"HHH, Norvik2D::checkZoneQuality(bad): angle(", 3},
          {", oppLen=10 (aspect=1)\n", 3},
          {"Norvik2D writes constraints to bad[constraintnumber].con\n", 1},
          {"Norvik2D::checkZoneQuality() message: numTriangles: 1, worst "
           "degree=60\n---------------------------------------\n",
           1}},
         {"bad_c0.con", "Dt2_checkZoneQuality_bad.ps"}},
        {"needle",
         needle,
         0,
         false,
         {{"HHH: Bad Aspect 20 for triangle ", 1}, {"HHH, Norvik2D::checkZoneQuality(needle): angle(", 3}},
         {"Dt2_checkZoneQuality_needle.ps"}},
        {"drawn", equilateral, -999, true, {{"HHH", 0}}, {"drawn.ps"}},
        {"drawnNeedle",
         needle,
         -999,
         false,
         {{"HHH: Bad Aspect", 1}},
         {"drawnNeedle.ps", "Dt2_checkZoneQuality_drawnNeedle.ps"}},
        {"binary", needle, -1000, true, {{"HHH", 0}}, {"binary_c0_con.bin"}},
        {"even", kite(1, 2.99, false), growth, true, {}, {}},
        {"grown",
         kite(1, 3.5, false),
         growth,
         false,
         {{"Dt2::checkZoneQuality(), WARNING: Bad grow factor, area=3.5, neigArea=1, grow=3.5", 1},
          {"Have no pCSeg there\n", 1}},
         {"badZonegrown.ps"}},
        {"walled",
         kite(1, 3.5, true),
         growth,
         false,
         {{"Bad grow factor", 1}, {"Area in associated pCSeg is: 1.79769e+308\n", 1}},
         {"badZonewalled.ps"}},
        {"small", kite(0.2, 3.5, true), growth, true, {}, {}},
        {"alone", {"", {{{0, 0}, {10, 0}, {10, 10}, {0, 10}, {1, 5}}}}, growth, true, {}, {}},
        {"shapeless", needle, growth, true, {}, {}},
    };
    for (const auto& [name, domain, limit, bPasses, told, files] : cases) {
        SCOPED_TRACE(name);
        Meshed meshed(domain);
        for (const char* file : files) std::filesystem::remove(file);
        CaptureOutput output;
        EXPECT_EQ(meshed.mesh.checkZoneQuality(meshed.pZone, limit, name, {}), bPasses);
        for (const auto& [text, times] : told) {
            std::size_t n = 0;
            for (std::size_t at = 0; (at = output.out().find(text, at)) != std::string::npos; ++at) ++n;
            EXPECT_EQ(n, times) << text << "\n" << output.out();
        }
        EXPECT_EQ(output.out().empty(), files.empty()) << output.out();
        for (const char* file : files) EXPECT_NE(contentOf(file), "") << file;
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
