#ifndef ZEF_TINYBORDERPIECES_H
#define ZEF_TINYBORDERPIECES_H

namespace TARN_ZEF
{
class CMesh;

// Kills the pieces between borders and non-manifold edges that have few triangles and much border.
//
// Cost:  no more than a few walks over the triangles at the borders, whatever the limit.
class TinyBorderPieces
{
public:
    explicit TinyBorderPieces(CMesh* pCMesh_);

    // maxNumT  larger pieces stay
    void kill(int maxNumT);

private:
    CMesh* pCMesh;
};

} // namespace TARN_ZEF

#endif
