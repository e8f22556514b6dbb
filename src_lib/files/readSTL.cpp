// Triangles out of ASCII STL files.
#include "zef_files.h"

#include "core/cancel.h"
#include "core/definitions.h"
#include "text/LineReader.h"
#include "text/TextNumbers.h"

#include <cstring>
#include <fstream>
#include <new>
#include <stdexcept>

namespace TARN_ZEF
{
namespace
{
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
// The end and "vertex" count in small letters only.
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
            closeFacet();
        if (!bFacetSeen && !bSolidSeen && !bBlank)
            fail("this is no ASCII STL file");
    }

private:
    [[noreturn]] void fail(const std::string& reason) const
    {
        throw std::runtime_error("line " + std::to_string(lines.getLineNumber()) + ": " + reason);
    }

    void takeLine(std::string_view line, std::vector<Point3>& vCorners)
    {
        if (std::memchr(line.data(), '\0', line.size()) != nullptr)
            fail("binary STL is not supported");
        if (holdsWords(line, "outer", "loop") || holdsWords(line, "OUTER", "LOOP"))
            openFacet();
        else if (bInFacet && line.find("endloop") != std::string_view::npos)
            closeFacet();
        else if (bInFacet && line.find("vertex") != std::string_view::npos)
            takeVertex(line, vCorners);
        else if (!bFacetSeen && !bSolidSeen)
            takeFirstLine(line);
    }

    void openFacet()
    {
        if (bInFacet && numCorners > 0)
            closeFacet();
        bInFacet = true;
        bFacetSeen = true;
        numCorners = 0;
    }

    void closeFacet()
    {
        if (numCorners != 3)
            fail("a facet with " + std::to_string(numCorners) + " corners");
        bInFacet = false;
        numCorners = 0;
    }

    void takeVertex(std::string_view line, std::vector<Point3>& vCorners)
    {
        const char* p = line.data();
        const char* pEnd = p + line.size();
        static_cast<void>(nextToken(p, pEnd));
        Point3 corner;
        if (!extractPoint({p, static_cast<std::size_t>(pEnd - p)}, corner))
            fail("a vertex without three coordinates");
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
    std::size_t numCorners = 0; // of the open facet
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
            throw std::runtime_error("binary STL is not supported");
        std::vector<Point3> vCorners;
        StlParser(source).run(vCorners);
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
