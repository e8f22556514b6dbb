#ifndef ZEF_SOURCESURFACE_H
#define ZEF_SOURCESURFACE_H

#include "Vector3.h"
#include "remesh/FlatSoup.h"
#include "surface/HalfEdgeMesh.h"

#include <vector>

namespace TARN_ZEF
{
// A run of feature edges between two corners, or round. Vertices in order; a closed one ends where it began.
struct CreaseChain
{
    std::vector<int> vVertices;
    int left = HalfEdgeMesh::NONE; // patches beside it; the right one is missing at a border
    int right = HalfEdgeMesh::NONE;
};

// What the features part: triangles of one label.
struct Patch
{
    bool bFlat = true;  // within a small part of the tolerance of a plane: distances need not be measured
    bool bExact = true; // within rounding
    Vector3 normal;     // of a flat one
    Point3 base;
};

// The surface as it came, with its features: edges that stay. They are borders, edges above the feature angle,
// and ridges below it that are too long and too high to vanish within the tolerance. Vertices where features meet, end
// or turn sharply are FIXED, the other ones on features are CHAIN.
//
// Invariant:  the mesh is compact; feature() is 1 on features; label() of a triangle is its patch.
class SourceSurface
{
public:
    // False if soup is no oriented manifold.
    [[nodiscard]] bool build(const FlatSoup& soup);

    // Degrees; where the distribution of dihedral angles, weighted by length, has its gap.
    [[nodiscard]] double findFeatureAngle() const;
    // How far a vertex usually stands off from where its neighbours' neighbours would put it, in units of the
    // points: next to nothing on smooth surfaces, the noise of a scan. 0 if most vertices stand at edges above the angle.
    [[nodiscard]] double getRoughness(double featureAngle) const;
    // Finds features, patches and chains, in place of those found before. On a rough surface short features come from noise and
    // are left out, and corners of borders that stand within the tolerance of one another become one.
    void markFeatures(double featureAngle, double length, double tolerance, bool bRough);

    [[nodiscard]] const HalfEdgeMesh& getMesh() const { return mesh; }
    [[nodiscard]] const std::vector<Patch>& getPatches() const { return vPatches; }
    [[nodiscard]] const std::vector<CreaseChain>& getChains() const { return vChains; }
    [[nodiscard]] const Vector3& normal(int t) const { return vNormals[t]; }
    [[nodiscard]] double lengthOf(const CreaseChain& chain) const;
    [[nodiscard]] double getExtent() const { return extent; }
    [[nodiscard]] double getArea() const { return area; }

private:
    [[nodiscard]] double cosOfEdge(int h) const;
    [[nodiscard]] std::vector<bool> findSmoothVertices(double featureAngle) const;
    [[nodiscard]] Vector3 bulgeAt(int v) const;
    [[nodiscard]] Vector3 normalAt(int v) const;
    [[nodiscard]] bool isRidge(int h, double length, double tolerance) const;
    [[nodiscard]] bool isTip(int v, double length, double tolerance) const;
    void forgetFeatures();
    void dropShortFeatures(double shortest);
    void findKinds(double length, double tolerance);
    void joinCorners(double tolerance);
    void findPatches();
    void findFlatPatches(double tolerance);
    void findChains();
    [[nodiscard]] CreaseChain followChain(int first, int second, std::vector<bool>& vSeen) const;

    HalfEdgeMesh mesh;
    std::vector<Vector3> vNormals;
    std::vector<Patch> vPatches;
    std::vector<CreaseChain> vChains;
    double extent = 0.0;
    double area = 0.0;
};

// Calls f(u, h) for each feature edge at v: its other end and the half-edge that there is, in either direction.
template <typename F>
void forEachFeatureAt(const HalfEdgeMesh& mesh, int v, F f)
{
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             if (mesh.feature(h) != 0)
                                 f(mesh.to(h), h);
                             const int g = HalfEdgeMesh::prev(h);
                             if (mesh.isBorder(g) && mesh.feature(g) != 0)
                                 f(mesh.from(g), g);
                         });
}

} // namespace TARN_ZEF

#endif
