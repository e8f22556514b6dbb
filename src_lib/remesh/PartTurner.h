#ifndef ZEF_PARTTURNER_H
#define ZEF_PARTTURNER_H

#include "remesh/FlatSoup.h"

#include <vector>

namespace TARN_ZEF
{
// Turns whole parts of a parted soup: closed ones outward, or inward where one is a cavity, that is where an odd
// number of other closed parts surrounds it and most of its area came in facing inward. Open parts face as most of
// their area came in.
class PartTurner
{
public:
    // vPart and vTurned as BodyParter tells them; vTurned says afterwards what was turned in all.
    PartTurner(FlatSoup& soup_, const std::vector<int>& vPart_, int numParts, std::vector<bool>& vTurned_);

    void run();

    [[nodiscard]] int getNumClosed() const { return numClosed; }
    [[nodiscard]] int getNumCavities() const { return numCavities; }
    // Of a part, after run(): whether it is closed round some space, and whether a closed one surrounds it.
    [[nodiscard]] bool isSolid(int part) const;
    [[nodiscard]] bool isWithinOther(int part) const { return countAround(vParts[part]) > 0; }

private:
    struct Part
    {
        std::vector<int> vTriangles;
        Point3 low;
        Point3 high;
        double volume = 0.0;
        double turnedArea = 0.0;
        double area = 0.0;
        bool bClosed = true;
    };

    void measure();
    void findOpen();
    [[nodiscard]] int countAround(const Part& inner) const;
    [[nodiscard]] bool isInside(const Point3& p, const Part& outer) const;
    void turn(const Part& part);

    FlatSoup& soup;
    const std::vector<int>& vPart;
    std::vector<bool>& vTurned;
    std::vector<Part> vParts;
    int numClosed = 0;
    int numCavities = 0;
};

} // namespace TARN_ZEF

#endif
