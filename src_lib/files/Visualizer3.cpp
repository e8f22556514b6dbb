#include "files/Visualizer3.h"

#include "core/definitions.h"
#include "core/refuse.h"
#include "files/PointNumbering.h"
#include "geometry/Segment3.h"
#include "lattice/Calc.h"
#include "text/TextWriter.h"
#include "text/closeWhole.h"

namespace TARN_ZEF
{
namespace
{
constexpr int PRECISION = 15;

struct Color
{
    const char* name;
    const char* rgba;
};

constexpr Color COLORS[NUM_COLORS] = {
    {"CLIGHTBLUE", CLIGHTBLUE},
    {"CDARKBLUE", CDARKBLUE},
    {"CYELLOW", CYELLOW},
    {"CPINK", CPINK},
    {"CBLACK", CBLACK},
    {"CLIGHTBROWN", CLIGHTBROWN},
    {"CDARKBROWN", CDARKBROWN},
    {"CORANGE", CORANGE},
    {"CPURPLE", CPURPLE},
    {"CGRAY", CGRAY},
    {"CLIGHTGRAY", CLIGHTGRAY},
    {"CRED", CRED},
    {"CGREEN", CGREEN},
    {"CWHITE", CWHITE},
    {"CRIMSON", CRIMSON},
    {"CDARKORANGE", CDARKORANGE},
    {"CGOLDENROD", CGOLDENROD},
    {"COLIVE", COLIVE},
    {"CLAWNGREEN", CLAWNGREEN},
    {"CGREENYELLOW", CGREENYELLOW},
    {"CPALEGREEN", CPALEGREEN},
    {"CMEDSPRINGGREEN", CMEDSPRINGGREEN},
    {"CLIGHTSEAGREAN", CLIGHTSEAGREAN},
    {"CCYAN", CCYAN},
    {"CSTEELBLUE", CSTEELBLUE},
    {"MIDNIGHTBLUE", MIDNIGHTBLUE},
    {"CWHEAT", CWHEAT},
};

// Corners of the six faces of a cube.
constexpr unsigned int CUBE_FACES[6][4] = {
    {0, 1, 2, 3}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7},
};

// The order of Calc::completeArray8Up.
constexpr int CUBE_CORNERS[8][3] = {
    {0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}, {0, 1, 0}, {1, 1, 0}, {1, 1, 1}, {0, 1, 1},
};

// The next colour of the cycle over all scenes.
int nextColorIndex = 0;

[[nodiscard]] int stepColor() noexcept
{
    // Black, purple, light gray and white hide the geometry.
    while (nextColorIndex == 4 || nextColorIndex == 8 || nextColorIndex == 10 || nextColorIndex == 13)
        ++nextColorIndex;
    const int index = nextColorIndex;
    nextColorIndex = (nextColorIndex + 1) % NUM_COLORS;
    return index;
}

// The second line of an object: how much of each kind follows.
void writeCounts(TextWriter& out, std::size_t num0, std::size_t num1, std::size_t num2)
{
    out.exact(num0);
    out.text(" ");
    out.exact(num1);
    out.text(" ");
    out.exact(num2);
    out.text("\n");
}

[[nodiscard]] std::vector<Point3> toValues(const std::vector<Point3*>& vPointers)
{
    std::vector<Point3> vPoints;
    vPoints.reserve(vPointers.size());
    for (const Point3* pPoint : vPointers)
        vPoints.push_back(*pPoint);
    return vPoints;
}

} // namespace

// --- Colours ----------------------------------------------------------------------------------------------

std::string getColor(int index)
{
    return index >= 0 && index < NUM_COLORS ? COLORS[index].rgba : "";
}

std::string getColorName(int index)
{
    return index >= 0 && index < NUM_COLORS ? COLORS[index].name : "CUNKNOWN";
}

std::string Visualizer3::getNextColor()
{
    return getColor(stepColor());
}

std::string Visualizer3::getNextColorName()
{
    return getColorName(stepColor());
}

// --- The file ---------------------------------------------------------------------------------------------

Visualizer3::Visualizer3(const std::string& name_, const Calc* pCalc_, bool bAuthorized_)
    : name(name_)
    , pCalc(pCalc_)
    , bAuthorized(bAuthorized_)
{
    if (!bAuthorized)
    {
        printText("Unauthorized write of " + name + "\n");
        refuse<ZefRefusedException>("bAuthorized", "the scene " + name +
                                                       " is for debugging and switched off in this build; "
                                                       "nothing was written");
    }
    openFile();
}

Visualizer3::~Visualizer3()
{
    if (is_open())
        endScene();
}

void Visualizer3::openFile()
{
    printText("Writing " + name + "\n");
    open(name, std::ios::out | std::ios::binary);
    bOpen = is_open();
    if (!bOpen)
    {
        warningMessage("Visualizer3::openFile()", name + " not writeable");
        return;
    }
    imbue(std::locale::classic());
    precision(PRECISION);
    *this << "LIST\n{\n";
}

void Visualizer3::endScene()
{
    *this << "}\n";
}

bool Visualizer3::finish()
{
    if (!is_open())
        return false;
    endScene();
    if (closeWhole(*this))
        return true;
    warningMessage("Visualizer3::finish()", name + " could not be written whole");
    return false;
}

// --- Points and segments ----------------------------------------------------------------------------------

void Visualizer3::writePoint(const Point3& point, unsigned int size, const std::string& colour)
{
    writeVect({point}, 1, size, colour);
}

void Visualizer3::writePoint(CCD ccd, unsigned int size, const std::string& colour)
{
    writeVect(getMids({ccd}), 1, size, colour);
}

void Visualizer3::writeRCD(RCD rcd, unsigned int size, const std::string& colour)
{
    ASSEX_TEXT(pCalc != nullptr, "pCalc!=0");
    writePoint(pCalc->getMidOfRCD(rcd), size, colour);
}

void Visualizer3::writePoints(const std::vector<Point3>& vPoints, unsigned int size,
                              const std::string& colour)
{
    if (vPoints.empty())
        return reportEmpty("writePoints", "points");
    writeVect(vPoints, 1, size, colour);
}

void Visualizer3::writePoints(const std::vector<Point3*>& vPoints, unsigned int size,
                              const std::string& colour)
{
    writePoints(toValues(vPoints), size, colour);
}

void Visualizer3::writePoints(const std::vector<CCD>& vCCD, unsigned int size, const std::string& colour)
{
    writePoints(getMids(vCCD), size, colour);
}

void Visualizer3::writeSegment(const Point3& p0, const Point3& p1, unsigned int width,
                               const std::string& colour)
{
    writeVect({p0, p1}, 2, width, colour);
}

void Visualizer3::writeSegment(CCD ccd0, CCD ccd1, unsigned int width, const std::string& colour)
{
    writeVect(getMids({ccd0, ccd1}), 2, width, colour);
}

void Visualizer3::writeSegments(const std::vector<Segment3>& vSegments, unsigned int width,
                                const std::string& colour)
{
    std::vector<Point3> vEnds;
    vEnds.reserve(2 * vSegments.size());
    for (const Segment3& segment : vSegments)
    {
        vEnds.push_back(segment.getSource());
        vEnds.push_back(segment.getTarget());
    }
    writeSegments(vEnds, width, colour);
}

void Visualizer3::writeSegments(const std::vector<Point3>& vEnds, unsigned int width,
                                const std::string& colour)
{
    ASSEX_TEXT(vEnds.size() % 2 == 0, "vEnds.size() must be a multiple of 2");
    if (vEnds.empty())
        return reportEmpty("writeSegments", "segments");
    writeVect(vEnds, 2, width, colour);
}

void Visualizer3::writeSegments(const std::vector<Point3*>& vEnds, unsigned int width,
                                const std::string& colour)
{
    writeSegments(toValues(vEnds), width, colour);
}

void Visualizer3::writeSegments(const std::vector<CCD>& vEnds, unsigned int width, const std::string& colour)
{
    writeSegments(getMids(vEnds), width, colour);
}

// --- Triangles --------------------------------------------------------------------------------------------

void Visualizer3::writeTriangle(const Point3& p0, const Point3& p1, const Point3& p2,
                                const std::string& colour)
{
    writeTriangles(std::vector<Point3>{p0, p1, p2}, colour);
}

void Visualizer3::writeTriangle(CCD ccd0, CCD ccd1, CCD ccd2, const std::string& colour)
{
    writeTriangles(getMids({ccd0, ccd1, ccd2}), colour);
}

void Visualizer3::writeTriangles(const std::vector<Point3>& vCorners, const std::string& colour)
{
    PointNumbering vertices;
    std::vector<unsigned int> vIndices;
    vIndices.reserve(vCorners.size());
    for (const Point3& corner : vCorners)
        vIndices.push_back(vertices.getNumber(&corner));
    writeIndexed(vertices.getPoints(), vIndices, colour);
}

void Visualizer3::writeTriangles(const std::vector<Point3*>& vCorners, const std::string& colour)
{
    PointNumbering vertices;
    std::vector<unsigned int> vIndices;
    vIndices.reserve(vCorners.size());
    for (const Point3* pCorner : vCorners)
        vIndices.push_back(vertices.getNumber(pCorner));
    writeIndexed(vertices.getPoints(), vIndices, colour);
}

void Visualizer3::writeTriangles(const std::vector<CCD>& vCorners, const std::string& colour)
{
    writeTriangles(getMids(vCorners), colour);
}

// --- Cubes ------------------------------------------------------------------------------------------------

void Visualizer3::writeCbs(const std::vector<CCD>& vCCD, const std::string& colour)
{
    ASSEX_TEXT(pCalc != nullptr, "pCalc!=0");
    double sizeX = 0.0;
    double sizeY = 0.0;
    double sizeZ = 0.0;
    pCalc->getCellSizes(sizeX, sizeY, sizeZ);
    std::vector<Point3> vPoints;
    vPoints.reserve(8 * vCCD.size());
    for (const CCD ccd : vCCD)
    {
        const Point3 ref = pCalc->getRef(ccd);
        for (const auto& offset : CUBE_CORNERS)
            vPoints.emplace_back(ref.x() + offset[0] * sizeX, ref.y() + offset[1] * sizeY,
                                 ref.z() + offset[2] * sizeZ);
    }
    writeCbs8(vPoints, colour);
}

void Visualizer3::writeCbs8(const std::vector<Point3>& vPoints, const std::string& colour)
{
    ASSEX_TEXT(vPoints.size() % 8 == 0, "vPoints.size() must be a multiple of 8");
    if (vPoints.empty())
        return reportEmpty("writeCbs8", "cubes");
    TextWriter writer(*this, PRECISION);
    writer.text("\n{\nappearance { +edge material { backdiffuse .151 .0 .2 } }\nOFF\n");
    writeCounts(writer, vPoints.size(), vPoints.size() / 8 * 6, 0);
    for (const Point3& point : vPoints)
        writer.point(point);
    for (std::size_t first = 0; first < vPoints.size(); first += 8)
    {
        for (const auto& face : CUBE_FACES)
        {
            writer.text("4 ");
            for (const unsigned int corner : face)
            {
                writer.exact(first + corner);
                writer.text(" ");
            }
            writer.text(colour);
            writer.text("\n");
        }
    }
    writer.text("}\n");
}

// --- Objects ----------------------------------------------------------------------------------------------

std::vector<Point3> Visualizer3::getMids(const std::vector<CCD>& vCCD) const
{
    ASSEX_TEXT(pCalc != nullptr, "pCalc!=0");
    std::vector<Point3> vPoints;
    pCalc->getMids(vCCD, vPoints);
    return vPoints;
}

void Visualizer3::reportEmpty(const std::string& call, const std::string& what) const
{
    printText("Visualizer3::" + call + ": no " + what + "\n");
}

// Polylines of numPerLine points each; the first one carries the colour for all.
void Visualizer3::writeVect(const std::vector<Point3>& vPoints, std::size_t numPerLine, unsigned int width,
                            const std::string& colour)
{
    const std::size_t numLines = vPoints.size() / numPerLine;
    TextWriter writer(*this, PRECISION);
    writer.text("\n{\nappearance{linewidth ");
    writer.exact(width);
    writer.text("}\nVECT\n");
    writeCounts(writer, numLines, vPoints.size(), 1);
    for (std::size_t i = 0; i < numLines; ++i)
        writer.text(numPerLine == 1 ? "1 " : "2 ");
    writer.text("\n1 ");
    for (std::size_t i = 1; i < numLines; ++i)
        writer.text("0 ");
    writer.text("\n");
    for (const Point3& point : vPoints)
        writer.point(point);
    writer.text(colour);
    writer.text("\n}\n");
}

void Visualizer3::writeIndexed(const std::vector<const Point3*>& vVertices,
                               const std::vector<unsigned int>& vIndices, const std::string& colour)
{
    ASSEX_TEXT(vIndices.size() % 3 == 0, "vCorners.size() must be a multiple of 3");
    if (vIndices.empty())
        return reportEmpty("writeTriangles", "triangles");
    TextWriter writer(*this, PRECISION);
    writer.text("\n{\nOFF\n");
    writeCounts(writer, vVertices.size(), vIndices.size() / 3, 0);
    for (const Point3* pVertex : vVertices)
        writer.point(*pVertex);
    for (std::size_t i = 0; i < vIndices.size(); i += 3)
    {
        writer.text("3 ");
        for (std::size_t ici = 0; ici < 3; ++ici)
        {
            writer.exact(vIndices[i + ici]);
            writer.text(" ");
        }
        writer.text(colour);
        writer.text("\n");
    }
    writer.text("}\n");
}

} // namespace TARN_ZEF
