// Triangles out of ASCII STL files.
#include "zef_files.h"

#include "core/cancel.h"
#include "core/definitions.h"
#include "geometry/isFinite.h"
#include "text/LineReader.h"
#include "text/TextNumbers.h"
#include "text/quote.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <new>
#include <stdexcept>

namespace TARN_ZEF
{
namespace
{
constexpr const char* TAG = "readSTL";
constexpr const char* WAY_OUT = "; readTriangles() of zef_formats.h reads every STL";

// Whether line holds the two words, with any blanks between them.
[[nodiscard]] bool holdsWords(std::string_view line, std::string_view first, std::string_view second)
{
    for (std::size_t pos = line.find(first); pos != std::string_view::npos; pos = line.find(first, pos + 1))
    {
        std::string_view rest = line.substr(pos + first.size());
        const std::size_t size = rest.size();
        while (!rest.empty() && isBlank(rest.front()))
            rest.remove_prefix(1);
        if (rest.size() < size && rest.starts_with(second))
            return true;
    }
    return false;
}

// Whether its first word is "vertex", in whatever letters.
[[nodiscard]] bool startsWithVertex(std::string_view line)
{
    constexpr std::string_view WORD = "vertex";
    const char* p = line.data();
    const std::string_view first = nextToken(p, p + line.size());
    return std::equal(first.begin(), first.end(), WORD.begin(), WORD.end(),
                      [](char c, char small) { return c == small || c == small - 'a' + 'A'; });
}

// Three numbers, of which some may be "nan" or "inf".
[[nodiscard]] bool extractNotFinite(std::string_view coordinates, Point3& corner)
{
    const char* p = coordinates.data();
    const char* const pEnd = p + coordinates.size();
    double aXYZ[3];
    for (double& coordinate : aXYZ)
        if (!parseNumber(nextToken(p, pEnd), coordinate))
            return false;
    corner.set(aXYZ[0], aXYZ[1], aXYZ[2]);
    return true;
}

// Whether the file starts as a binary STL of exactly its size: a header of 80 bytes, the number of
// triangles, 50 bytes for each of them.
[[nodiscard]] bool hasBinarySize(ByteSource& source)
{
    if (!source.need(84))
        return false;
    std::uint32_t num = 0;
    std::memcpy(&num, source.getData() + 80, sizeof num);
    return source.getRemaining() == u64{84} + u64{50} * num;
}

// The facets of an ASCII STL, line by line. Corners of a facet that has not exactly three of them must never
// slip into the next one: such a file is refused.
//
// A facet starts at a line with "outer loop", in small or capital letters, and ends at one with "endloop".
// The end and "vertex" count in small letters only. Facets with a corner that is not finite are left out.
class StlParser
{
public:
    explicit StlParser(ByteSource& source)
        : lines(source)
    {
    }

    void run(std::vector<Point3>& vCorners)
    {
        std::string_view line;
        while (lines.next(line))
            takeLine(line, vCorners);
        if (bInFacet)
            closeFacet(vCorners);
        if (!bFacetSeen && !bSolidSeen && !bBlank)
            fail("this is no ASCII STL file");
    }

    // What was read otherwise than a user may expect.
    void warn(const std::string& filename) const
    {
        if (numNotFinite > 0)
            warningMessage(TAG, filename + ": facets left out for a corner that is not finite: " +
                                    std::to_string(numNotFinite) + ", the first ends in line " +
                                    std::to_string(firstNotFinite));
        if (!bFacetSeen && otherLetters > 0)
            warningMessage(TAG, filename +
                                    ": no facet begins with \"outer loop\" or \"OUTER LOOP\", but line " +
                                    std::to_string(otherLetters) + " holds a vertex" + WAY_OUT);
    }

private:
    [[noreturn]] void fail(const std::string& reason) const
    {
        throw std::runtime_error("line " + std::to_string(lines.getLineNumber()) + ": " + reason);
    }

    void takeLine(std::string_view line, std::vector<Point3>& vCorners)
    {
        if (std::memchr(line.data(), '\0', line.size()) != nullptr)
            fail(std::string("binary STL is not supported") + WAY_OUT);
        if (holdsWords(line, "outer", "loop") || holdsWords(line, "OUTER", "LOOP"))
            openFacet(vCorners);
        else if (bInFacet && line.find("endloop") != std::string_view::npos)
            closeFacet(vCorners);
        else if (bInFacet && line.find("vertex") != std::string_view::npos)
            takeVertex(line, vCorners);
        else
            takeOtherLine(line);
    }

    void takeOtherLine(std::string_view line)
    {
        if (otherLetters == 0 && (bInFacet || !bFacetSeen) && startsWithVertex(line))
            otherLetters = lines.getLineNumber();
        if (!bFacetSeen && !bSolidSeen)
            takeFirstLine(line);
    }

    void openFacet(std::vector<Point3>& vCorners)
    {
        if (bInFacet && numCorners > 0)
            closeFacet(vCorners);
        bInFacet = true;
        bFacetSeen = true;
        numCorners = 0;
    }

    void closeFacet(std::vector<Point3>& vCorners)
    {
        if (numCorners != 3)
            fail("a facet with " + std::to_string(numCorners) + " corners" + getLettersHint());
        bInFacet = false;
        numCorners = 0;
        if (std::all_of(vCorners.end() - 3, vCorners.end(), isFinite))
            return;
        vCorners.resize(vCorners.size() - 3);
        if (numNotFinite++ == 0)
            firstNotFinite = lines.getLineNumber();
    }

    [[nodiscard]] std::string getLettersHint() const
    {
        return otherLetters > 0
                   ? std::string(", since \"vertex\" and \"endloop\" count in small letters only") + WAY_OUT
                   : "";
    }

    void takeVertex(std::string_view line, std::vector<Point3>& vCorners)
    {
        const char* p = line.data();
        const char* pEnd = p + line.size();
        static_cast<void>(nextToken(p, pEnd));
        const std::string_view coordinates(p, static_cast<std::size_t>(pEnd - p));
        Point3 corner;
        if (!extractPoint(coordinates, corner) && !extractNotFinite(coordinates, corner))
            fail("a vertex without three coordinates: " + quote(line));
        vCorners.push_back(corner);
        ++numCorners;
    }

    void takeFirstLine(std::string_view line)
    {
        const char* p = line.data();
        const std::string_view word = nextToken(p, p + line.size());
        bSolidSeen = word == "solid" || word == "SOLID";
        bBlank = bBlank && word.empty();
    }

    LineReader lines;
    std::size_t numCorners = 0;   // of the open facet
    std::size_t numNotFinite = 0; // facets
    u64 firstNotFinite = 0;       // line where the first of them ends
    u64 otherLetters = 0;         // first line with a vertex where or as none is read; 0 if there is none
    bool bInFacet = false;
    bool bFacetSeen = false;
    bool bSolidSeen = false;
    bool bBlank = true; // nothing but blanks so far
};

} // namespace

bool readSTL_ASCII(const char* filename, std::vector<Point3>& vPoints)
{
    std::ifstream file(filename, std::ios::binary);
    if (!file)
    {
        printFailure("readSTL(): " + std::string(filename) + " is unreadable\n");
        return false;
    }
    try
    {
        ByteSource source(file);
        if (hasBinarySize(source))
            throw std::runtime_error(std::string("binary STL is not supported") + WAY_OUT);
        std::vector<Point3> vCorners;
        StlParser parser(source);
        parser.run(vCorners);
        parser.warn(filename);
        if (vPoints.empty())
            vPoints.swap(vCorners);
        else
            vPoints.insert(vPoints.end(), vCorners.begin(), vCorners.end());
        return true;
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& e)
    {
        checkCancelled(); // which is no fault of the file
        printFailure("readSTL(): " + std::string(filename) + " is unreadable, " + e.what() + "\n");
        return false;
    }
}

} // namespace TARN_ZEF
