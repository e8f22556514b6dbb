#ifndef ZEF_SEAMPASS_H
#define ZEF_SEAMPASS_H

namespace TARN_ZEF
{
class CMesh;
struct RepairState;

// Decides over patches that meet at edges of more than two triangles where no two of them have the same
// boundary, so that only several of them together can be judged.
//
// Comes in:  a mesh on which PatchPass has nothing more to do.
// Leaves:    patches killed, together with what PatchPass then finds to do. On an open surface only small
//            ones without a border go: there three sheets may meet for good.
// Cost:      nothing but a look at the seams if none of them has an odd number of triangles; else patches
//            of the whole mesh.
class SeamPass
{
public:
    explicit SeamPass(RepairState& state_);

    void run();

private:
    bool killWhatLoses();

    RepairState& state;
    CMesh* pCMesh;
};

} // namespace TARN_ZEF

#endif
