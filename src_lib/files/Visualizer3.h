#ifndef ZEF_VISUALIZER3_H
#define ZEF_VISUALIZER3_H

#include "Point3.h"
#include "lattice/cellCodes.h"

#include <fstream>
#include <string>
#include <vector>

namespace TARN_ZEF
{
class Calc;
class Segment3;

// Whether the passes may write debug scenes. Code that makes one stands behind this switch: elsewhere a
// scene without authorisation ends in ZefBugException.
#ifdef ZEF_DEBUG_SCENES
inline constexpr bool DEBUG_SCENES = true;
#else
inline constexpr bool DEBUG_SCENES = false;
#endif

// Colours of a scene: red, green, blue, alpha.
inline constexpr const char* CLIGHTBLUE = "0 0.70 .9 0.5";
inline constexpr const char* CDARKBLUE = "0 0.2 .85 0.5";
inline constexpr const char* CYELLOW = "1 1 0 0.5";
inline constexpr const char* CPINK = "1 0.411 0.705 0.5";
inline constexpr const char* CBLACK = "0.1 0.1 0.1 0.5";
inline constexpr const char* CLIGHTBROWN = "0.823 0.705 0.549 0.5";
inline constexpr const char* CDARKBROWN = "0.545 0.271 0.074 0.5";
inline constexpr const char* CORANGE = "1 0.627 0 0.5";
inline constexpr const char* CPURPLE = "0.627 0.125 0.941 0.5";
inline constexpr const char* CGRAY = ".745 .745 .745 0.5";
inline constexpr const char* CLIGHTGRAY = ".445 .445 .445 0.5";
inline constexpr const char* CRED = "1 0 0 0.5";
inline constexpr const char* CGREEN = "0 1 0 0.5";
inline constexpr const char* CWHITE = "1 1 1 0.5";
inline constexpr const char* CRIMSON = ".86 .08 .24 0.5";
inline constexpr const char* CDARKORANGE = "1 .55 0 0.5";
inline constexpr const char* CGOLDENROD = ".85 .65 .13 0.5";
inline constexpr const char* COLIVE = ".5 .5 .0 0.5";
inline constexpr const char* CLAWNGREEN = "0.49\t0.99 0.00 0.5";
inline constexpr const char* CGREENYELLOW = "0.68 1.00 0.18 0.5";
inline constexpr const char* CPALEGREEN = "0.60\t0.98 0.60 0.5";
inline constexpr const char* CMEDSPRINGGREEN = "0.00 0.98 0.60 0.5";
inline constexpr const char* CLIGHTSEAGREAN = "0.13 0.70 0.67 0.5";
inline constexpr const char* CCYAN = "0.00 1.00 1.00 0.5";
inline constexpr const char* CSTEELBLUE = "0.27 0.51 0.71 0.5";
inline constexpr const char* MIDNIGHTBLUE = "0.10 0.10 0.44 0.5";
inline constexpr const char* CWHEAT = "0.96 0.87 0.7 0.5";

// The colours by index, 0 to 26. Any other index has the name "CUNKNOWN" and no colour.
inline constexpr int NUM_COLORS = 27;
[[nodiscard]] std::string getColor(int index);
[[nodiscard]] std::string getColorName(int index);

// Writes geometry as a scene for the viewer Geomview: one LIST of VECT (points, segments) and OFF
// (triangles, cells) objects. Every call adds one object; empty lists add none and say so.
//
// Cells are drawn by their centres, writeCbs draws them as cubes; both need the lattice.
//
// Ownership:  none; the lattice must outlive the scene.
// Threads:    one; the colour cycle is one for the process and takes no lock.
class Visualizer3 : public std::ofstream
{
public:
    // Opens the file; test isOpen().
    //
    // pCalc_        may be null for scenes without cells
    // bAuthorized_  false is refused with ZefBugException, before anything is written
    Visualizer3(const std::string& name_, const Calc* pCalc_, bool bAuthorized_);
    ~Visualizer3() override;
    Visualizer3(const Visualizer3&) = delete;
    Visualizer3& operator=(const Visualizer3&) = delete;

    [[nodiscard]] bool isOpen() const { return bOpen; }

    // Ends the scene and closes the file. False, with a warning, if it could not be written whole.
    [[nodiscard]] bool finish();

    // size, width: in pixels.
    void writePoint(const Point3& point, unsigned int size, const std::string& colour);
    void writePoint(CCD ccd, unsigned int size, const std::string& colour);
    void writeRCD(RCD rcd, unsigned int size, const std::string& colour);
    void writePoints(const std::vector<Point3>& vPoints, unsigned int size, const std::string& colour);
    void writePoints(const std::vector<Point3*>& vPoints, unsigned int size, const std::string& colour);
    void writePoints(const std::vector<CCD>& vCCD, unsigned int size, const std::string& colour);

    // Two consecutive entries are one segment.
    void writeSegment(const Point3& p0, const Point3& p1, unsigned int width, const std::string& colour);
    void writeSegment(CCD ccd0, CCD ccd1, unsigned int width, const std::string& colour);
    void writeSegments(const std::vector<Segment3>& vSegments, unsigned int width, const std::string& colour);
    void writeSegments(const std::vector<Point3>& vEnds, unsigned int width, const std::string& colour);
    void writeSegments(const std::vector<Point3*>& vEnds, unsigned int width, const std::string& colour);
    void writeSegments(const std::vector<CCD>& vEnds, unsigned int width, const std::string& colour);
    // Edges of a refined mesh.
    template <typename Edge>
    void writeSegments(const std::vector<Edge*>& vEdges, unsigned int width, const std::string& colour);

    // Three consecutive entries are one triangle.
    void writeTriangle(const Point3& p0, const Point3& p1, const Point3& p2, const std::string& colour);
    void writeTriangle(CCD ccd0, CCD ccd1, CCD ccd2, const std::string& colour);
    void writeTriangles(const std::vector<Point3>& vCorners, const std::string& colour);
    void writeTriangles(const std::vector<Point3*>& vCorners, const std::string& colour);
    void writeTriangles(const std::vector<CCD>& vCorners, const std::string& colour);
    // Triangles of either mesh; those of the lattice mesh stand at the cells' centres.
    template <typename Triangle>
    void writeTriangles(const std::vector<Triangle*>& vTriangles, const std::string& colour);

    // Cells as cubes.
    void writeCbs(const std::vector<CCD>& vCCD, const std::string& colour);
    // Eight consecutive entries are the corners of one cube, in the order of Calc::completeArray8Up.
    void writeCbs8(const std::vector<Point3>& vPoints, const std::string& colour);

    // The next colour of a cycle that leaves out black, purple, light gray and white. Both calls step it.
    [[nodiscard]] static std::string getNextColor();
    [[nodiscard]] static std::string getNextColorName();

private:
    void openFile();
    void endScene();
    [[nodiscard]] std::vector<Point3> getMids(const std::vector<CCD>& vCCD) const;
    // Where there is nothing to write.
    void reportEmpty(const std::string& call, const std::string& what) const;
    void writeVect(const std::vector<Point3>& vPoints, std::size_t numPerLine, unsigned int width,
                   const std::string& colour);
    void writeIndexed(const std::vector<const Point3*>& vVertices, const std::vector<unsigned int>& vIndices,
                      const std::string& colour);

    std::string name;
    const Calc* pCalc;
    bool bAuthorized;
    bool bOpen = false;
};

template <typename Edge>
void Visualizer3::writeSegments(const std::vector<Edge*>& vEdges, unsigned int width,
                                const std::string& colour)
{
    std::vector<Point3> vEnds;
    vEnds.reserve(2 * vEdges.size());
    for (const Edge* pEdge : vEdges)
    {
        vEnds.push_back(*pEdge->getVtx0());
        vEnds.push_back(*pEdge->getVtx1());
    }
    writeSegments(vEnds, width, colour);
}

template <typename Triangle>
void Visualizer3::writeTriangles(const std::vector<Triangle*>& vTriangles, const std::string& colour)
{
    // Points, or cell codes.
    std::vector<decltype(vTriangles[0]->getCorner(0))> vCorners;
    vCorners.reserve(3 * vTriangles.size());
    for (const Triangle* pTriangle : vTriangles)
    {
        for (int ici = 0; ici < 3; ++ici)
            vCorners.push_back(pTriangle->getCorner(ici));
    }
    writeTriangles(vCorners, colour);
}

} // namespace TARN_ZEF

#endif
