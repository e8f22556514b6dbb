// The part of Cloud that reads its file, and its statistics.
#include "intake/Cloud.h"

#include "core/Timer.h"
#include "geometry/tools.h"
#include "testDataGenerators.h"
#include "zef_files.h"

namespace TARN_ZEF
{
namespace
{
// Stands for a generated surface: a test needs no file.
constexpr const char* SAMPLE_NAME = "artificial123.xyz";

void print(const std::string& text)
{
    printText(text + "\n");
}
} // namespace

bool Cloud::read()
{
    std::vector<Point3> v;
    Timer timerReadPoints;
    const bool bOK = readPoints(name, v);
    readTime = timerReadPoints.stop();
    if (bOK)
        takePoints(std::move(v));
    return bOK;
}

bool Cloud::readPoints(const std::string& filename, std::vector<Point3>& v)
{
    if (!readByType(filename, v))
    {
        print("void Cloud::readPoints(), Error reading file: " + filename);
        return false;
    }
    if (v.empty())
    {
        print("void Cloud::readPoints(), Empty file: " + filename);
        return true;
    }
    numInputPoints = v.size();
    print("Cloud::readPoints():\n  + Number of input points: " + std::to_string(numInputPoints));
    return true;
}

bool Cloud::readByType(const std::string& filename, std::vector<Point3>& v) const
{
    if (filename == SAMPLE_NAME)
    {
        generateSampleSurface(SAMPLE_SURFACE_POINTS, SAMPLE_SURFACE_SEED, v);
        print("Number of artificial points:" + std::to_string(v.size()));
        return true;
    }
    switch (getFileType(filename))
    {
    case FT_STL:
        if (!bMelt)
            print("\n Input file is of type STL, use --fmelt (-m) instead");
        ASSEX_TEXT(bMelt, "bMelt");
        if (!(spacingAbs > 0))
            print("\nFor an STL provide also the -a option please\n");
        ASSEX_TEXT(spacingAbs > 0, "spacingAbs>0");
        return readSTL_ASCII(filename.c_str(), v);
    case FT_PLY:
        return readPly(filename.c_str(), true, v);
    case FT_ASCII:
        return readPoints_ASCII(filename.c_str(), v);
    case FT_BIN:
        return readPoints_BIN(filename.c_str(), v);
    case FT_LIST:
    case FT_UNKNOWN:
        break;
    }
    print("Unknown file format");
    return false;
}

void Cloud::printStatistics() const
{
    print("\nCloud::printStatistics( " + name + " )\n" + std::string(60, '-'));
    print("Input points: " + std::to_string(numInputPoints));
    if (spacingAbs > 0.0)
        print("Spacing is user defined: " + toText(spacingAbs));
    else
        print("Spacing factor:     " + toText(spacingFactor) +
              "\nDetected spacing:       " + toText(usedSpacing));
}

} // namespace TARN_ZEF
