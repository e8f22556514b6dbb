#ifndef ZEF_DUPLICATEPOINTS_H
#define ZEF_DUPLICATEPOINTS_H

namespace TARN_ZEF
{
class CMesh;

// Moves corners until no two of them hold the same position. The first one of a group stays.
//
// Cost:  a sort of all corners by position.
class DuplicatePoints
{
public:
    explicit DuplicatePoints(CMesh* pCMesh_);

    void separate();

private:
    CMesh* pCMesh;
};

} // namespace TARN_ZEF

#endif
