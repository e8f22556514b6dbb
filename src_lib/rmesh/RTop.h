#ifndef ZEF_RTOP_H
#define ZEF_RTOP_H

#include <map>
#include <vector>

namespace TARN_ZEF
{
class Point3;
class REdge;
class RMesh;
class RTriangle;

// The passes over a refined mesh; run() is the last step of the reconstruction. The others work on a mesh in
// the state that run() leaves: oriented, without duplicates.
//
// Ownership:  none; the mesh must outlive it.
// Threads:    the caller's. run(), edgeFlips(), edgeFlipsSimA(), optimizeAnnealed() and laplacianSmoothing()
//             need a tree of progress.
class RTop
{
public:
    explicit RTop(RMesh* pRMesh_) noexcept
        : pRMesh(pRMesh_)
    {
    }

    // Removes duplicate triangles, makes orientations agree, removes flat triangles.
    void run();

    // --- Flips (RTopFlips.cpp) ---
    // As the public calls, but flat triangles stay.
    void edgeFlips();
    void edgeFlipsSimA(double temperature);
    void optimizeAnnealed();
    // Whether the edge p0-p1, of degree 2, may become pAlt0-pAlt1: the two new triangles exist nowhere and
    // bend by less than maxAngle degrees. p0 must have been made before p1; else a warning and false.
    [[nodiscard]] bool canFlip(const Point3* p0, const Point3* p1, const Point3* pAlt0, const Point3* pAlt1,
                               double maxAngle) const;
    // Cost of flipping a cap, in degrees; DBL_MAX forbids it. Out: the largest angle opposite the diagonal
    // and the dihedral angle, present and flipped. They are set as far as they have been computed.
    [[nodiscard]] double getFlipPenalty(const REdge* pRE, double& curLargestIntra, double& altLargestIntra,
                                        double& curDih, double& altDih) const;
    // Flips triangles with an angle above 170 degrees, the cheapest first. Returns the number of flips.
    int flipExtremeCaps();
    // Appends the edges of degree 2 that bend by at least minDihedral degrees.
    void getEdgesForOptimization(double minDihedral, std::vector<REdge*>& vRE) const;

    // --- Collapses (RTopFlips.cpp) ---
    // Collapses end iEnd (0 or 1, else fatal) into the other one, or both into a new vertex at midPoint.
    // False, and nothing changed, if a triangle would vanish or turn by more than maxDevAngle degrees, or
    // the rings share an edge, or midPoint is taken. After a collapse, the edges at the remaining vertex that
    // are shorter than maxSqLen (squared) enter mmPrioq by squared length.
    [[nodiscard]] bool tryCollapseEnd(const REdge* pRE, int iEnd, double maxSqLen, double maxDevAngle,
                                      std::multimap<double, REdge*>& mmPrioq);
    [[nodiscard]] bool tryCollapseMid(const REdge* pRE, const Point3& midPoint, double maxSqLen,
                                      double maxDevAngle, std::multimap<double, REdge*>& mmPrioq);

    // --- Smoothing ---
    // As the public call, but only the removal of flat triangles reports.
    void laplacianSmoothing(int numIterations);

private:
    void removeFlat();
    [[nodiscard]] bool flipCap(REdge* pRE);
    void queueEdgesAt(const Point3* pVtx, double maxSqLen, std::multimap<double, REdge*>& mmPrioq) const;

    RMesh* pRMesh;
};

} // namespace TARN_ZEF

#endif
