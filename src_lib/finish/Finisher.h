#ifndef ZEF_FINISHER_H
#define ZEF_FINISHER_H

#include "finish/FlatMesh.h"
#include "finish/FoldRemoval.h"
#include "finish/Relaxation.h"
#include "finish/SheetFit.h"
#include "finish/fans.h"
#include "finishSurface.h"
#include "geometry/NearFrame.h"
#include "surface/HalfEdgeMesh.h"

#include <optional>
#include <vector>

namespace TARN_ZEF
{
class Progress;

// The page of the room "finish": a mesh that may be anything comes in as flat data, with the points it was made from
// or without; a sound one goes out. The room knows no lattice, no CMesh and no RMesh.
//
// Ownership:  works on the caller's mesh; keeps references to cloud, options and report.
class Finisher
{
public:
    // frame: that mesh and cloud are in, and the mesh leaves afterwards; it is sound then, too.
    Finisher(FlatMesh& flat_, const std::vector<Point3>& vCloud_, const FinishOptions& options_,
             FinishReport& report_, const NearFrame& frame_ = NearFrame());

    void run();

private:
    using Rounding = FoldRemoval::Rounding;

    void scaleDown();
    [[nodiscard]] static Point3 getScaled(const Point3& p, int power);
    static void scale(std::vector<Point3>& vPoints, int power);
    static void tellDone(const char* step);
    void part();
    void improve();
    void evenBorders();
    void even(int numRounds);
    Relaxation::Flags mendThin();
    void fit();
    void makeCreases();
    void refineCreases();
    void removeFolds();
    void removeNeedles(FoldReport& folds, const Rounding& round);
    void removeFoldsOfFarPlace(FoldReport& folds);
    [[nodiscard]] bool areFloatsFine() const;
    void roundPoints(const Rounding& round);
    void load();
    void unload();
    [[nodiscard]] Mates getMates() const;
    [[nodiscard]] double findCellSize() const;

    FlatMesh& flat;
    const std::vector<Point3>& vCloud;
    const FinishOptions& options;
    FinishReport& report;
    NearFrame frame;
    HalfEdgeMesh mesh;
    std::optional<SheetFit> oFit;      // from the first fit on
    Progress* pEvenProgress = nullptr; // a step a round; not owned
    Progress* pFitProgress = nullptr;  // a step a vertex; not owned
    double cellSize = 0.0;
    int exponent = 0; // of the power of two by which all was divided
    std::vector<Point3> vScaledCloud;
    std::vector<std::uint8_t> vIsParted;
    std::vector<std::uint8_t> vIsOfLarge; // of the points of flat
};

} // namespace TARN_ZEF

#endif
