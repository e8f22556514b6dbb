#include "zef_api_functions.h"

#include "api/Hal.h"
#include "api/reportMesh.h"
#include "api/requireMesh.h"
#include "core/CallScope.h"
#include "core/ProgressScope.h"
#include "files/Visualizer3.h"
#include "intake/CloudMgr.h"
#include "rmesh/RMesh.h"

namespace TARN_ZEF
{
namespace
{
const double ABSENT_SPACING = -1.0;
const double NO_FEATURE_ANGLE = 361.0;       // above any dihedral angle
const int VERSION_MAJOR = ZEF_VERSION_MAJOR; // of the build
const int VERSION_MINOR = ZEF_VERSION_MINOR;

// The mesh of a cloud, or of the corners of triangles. name  of the call
std::shared_ptr<Mesh> makeMesh(const char* name, const std::vector<Point3>& vPoints, bool bMelt,
                               SpacingBy spacingBy, double spacingAbs, double spacingFactor,
                               double featureAngle, bool bSmooth)
{
    const CallScope call(name);
    ProgressScope progress(bMelt ? "Melt" : "Reconstruct");
    CloudMgr cloudMgr(spacingBy);
    cloudMgr.addPoints(vPoints, spacingAbs, spacingFactor, bMelt, featureAngle, bSmooth);
    Hal hal(&cloudMgr);
    std::shared_ptr<Mesh> pMesh = bMelt ? hal.oneMelt() : hal.reconstruct();
    progress.finish();
    reportMesh(pMesh);
    return pMesh;
}
} // namespace

std::shared_ptr<Mesh> reconstruct_auto(std::vector<Point3>& vPoints, bool bSmooth, double spacingFactor)
{
    return makeMesh("reconstruct_auto", vPoints, false, SpacingBy::FACTOR, ABSENT_SPACING, spacingFactor,
                    NO_FEATURE_ANGLE, bSmooth);
}

std::shared_ptr<Mesh> reconstruct_abs(std::vector<Point3>& vPoints, bool bSmooth, double spacingAbs)
{
    return makeMesh("reconstruct_abs", vPoints, false, SpacingBy::LENGTH, spacingAbs, ABSENT_SPACING,
                    NO_FEATURE_ANGLE, bSmooth);
}

std::shared_ptr<Mesh> melt(std::vector<Point3>& vTriCorners, double spacingAbs, double featureAngle)
{
    return makeMesh("melt", vTriCorners, true, SpacingBy::LENGTH, spacingAbs, ABSENT_SPACING, featureAngle,
                    false);
}

void toCloud(std::vector<Point3>& vTriCorners, double spacingAbs, double featureAngle,
             std::vector<Point3>& vResult)
{
    const CallScope call("toCloud");
    ProgressScope progress("ToCloud");
    CloudMgr cloudMgr;
    cloudMgr.addPoints(vTriCorners, spacingAbs, ABSENT_SPACING, true, featureAngle, false,
                       MemoryUse::SAMPLES);
    Hal hal(&cloudMgr);
    std::vector<Point3> vPoints;
    hal.toCloud(vPoints);
    progress.finish();
    vResult.insert(vResult.end(), vPoints.begin(), vPoints.end());
}

double estimateAvgSpacing(std::vector<Point3>& vPoints)
{
    const CallScope call;
    ProgressScope progress("Density Estimation");
    CloudMgr cloudMgr(SpacingBy::FACTOR);
    const double spacing = cloudMgr.addPoints(vPoints, ABSENT_SPACING, 1.0, false, NO_FEATURE_ANGLE, false);
    progress.finish();
    return spacing;
}

void findHoles(std::shared_ptr<Mesh> pMesh)
{
    requireMesh(pMesh);
    std::vector<REdge*> vRE;
    pMesh->getRMesh()->getDegN(DEG_BORDER, vRE);
    Visualizer3 vis("holes.list", nullptr, false);
    std::vector<Point3*> vCorners;
    pMesh->getTriangles(vCorners);
    vis.writeTriangles(vCorners, "CGREEN");
    vis.writeSegments(vRE, 3, "CRED");
}

void getVersion(int& major, int& minor)
{
    major = VERSION_MAJOR;
    minor = VERSION_MINOR;
}

void printVersion()
{
    const std::string minor = std::to_string(VERSION_MINOR);
    printText("ZEF, version " + std::to_string(VERSION_MAJOR) + "." + (minor.size() < 2 ? "0" : "") + minor +
              "\n");
}

bool isRelease()
{
    return false;
}

} // namespace TARN_ZEF
