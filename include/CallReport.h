// What a call has found and done, in figures.
//
//     CallReport report;
//     {
//         const ReportScope scope(report);        // the calls of this thread, until the scope ends
//         auto pMesh = reconstruct_auto(vPoints, false, 1.0);
//     }
//     std::cout << report.numNotFinite << " points left out\n";
//
// Books: the figures are counted where things happen, and add up. At the end of a finished call
//
//     numPoints = numUsedPoints + numNotFinite + numFlatCorners
//     numCells  = numPointCells + numFilledCells + numMovedCells - numRemovedCells
//     numT      = numRawT + what all passes added - what all passes killed
//     seconds   = the sum over all stages; peakBytes the largest of any stage
//
// Why a scope and not an argument: all calls have it without a second form, and a host that wants figures of one
// call only puts the scope around that one. Who does not ask pays nothing.
#ifndef ZEF_CALLREPORT_H
#define ZEF_CALLREPORT_H

#include "zef_export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace TARN_ZEF
{
// A part of a call. What runs several times is one stage, and what has no name of its own is in "other".
struct StageReport
{
    std::string name;
    double seconds = 0.0;
    // The most memory of the process that was resident meanwhile, looked at about every millisecond. The process is
    // the host, too, and calls on other threads. 0 where the system does not tell.
    std::size_t peakBytes = 0;
};

// A pass over the triangles, in the order in which the passes ran. A triangle that a pass made and killed again
// counts in both. A pass that extracts the surface anew has killed all triangles and added all that are there then.
struct PassReport
{
    std::string name; // that of its stage
    std::size_t numAddedT = 0;
    std::size_t numKilledT = 0;
};

// Figures of one call; what does not apply to it stays 0.
struct CallReport
{
    std::string call;       // "reconstruct_auto", ...; empty before the first
    bool bFinished = false; // false after an exception: all else is as far as the call came

    // --- Points, or corners of the triangles of a soup ---
    std::size_t numPoints = 0;      // handed in
    std::size_t numNotFinite = 0;   // left out: NaN or infinite; of a soup, with the whole triangle
    std::size_t numFlatCorners = 0; // left out: of triangles without area
    std::size_t numUsedPoints = 0;

    // --- Lattice ---
    double detectedSpacing = 0.0; // in units of the points; 0.0 if one was given
    double usedSpacing = 0.0;     // the one in force: edge of a cell
    int latticeBits = 0;          // the lattice has 2^latticeBits cells along each axis

    // --- Cells ---
    std::size_t numPointCells = 0;  // that points fell into, or triangles crossed
    std::size_t numFilledCells = 0; // added to close gaps between them
    std::size_t numMovedCells = 0;  // added by smoothing, where it moved points into other cells
    std::size_t numRemovedCells =
        0;                    // without a plane of the surface, or with the point of a cell that was there
    std::size_t numCells = 0; // handed to the extraction, or out

    // --- Triangles ---
    std::size_t numRawT = 0; // of the extraction; or of the mesh that was handed in
    std::vector<PassReport> vPasses;
    std::size_t numT = 0; // of the result

    std::size_t numHolesClosed = 0;
    std::size_t numPiecesDropped = 0; // pieces of surface that passes removed as a whole

    // --- The mesh as it is at the end ---
    std::size_t numBorderEdges = 0;
    std::size_t numBorderLoops = 0; // open borders
    std::size_t numNonManifoldEdges = 0;
    std::size_t numPieces = 0;
    std::int64_t eulerNumber = 0;

    // --- Time and memory; the look at the finished mesh for this report counts as a stage ---
    double seconds = 0.0;
    std::size_t bytesAtStart = 0; // memory of the process that was resident when the call began
    std::size_t peakBytes = 0;    // as of StageReport; less bytesAtStart it is about what the call took
    std::vector<StageReport> vStages;
};

// Lets the calls that this thread makes while the scope lives fill in a report: each starts it afresh, so that it
// tells about the last one. These calls report: reconstruct_auto(), reconstruct_abs(), autoReconstruct(), melt(),
// toCloud(), remesh(), finishSurface(), fillHoles() and all of post-processing. Of autoReconstruct(), points to
// passes are those of the mesh that was chosen, stages are the meshes made on the way.
//
// A scope inside another takes its place as long as it lives. Scopes end in the reverse order in which they began.
//
// Ownership:  the report is the host's, and must outlive the scope.
// Threads:    one; make and destroy it on the thread that calls. Not while a call runs: neither in update() nor in a
//             receiver of messages. Calls on other threads leave the report alone.
// Cost:       a thread that sleeps most of the time, and a look at the finished mesh: some percent of the call.
class ZEF_API ReportScope
{
public:
    explicit ReportScope(CallReport& report_) noexcept;
    ~ReportScope();
    ReportScope(const ReportScope&) = delete;
    ReportScope& operator=(const ReportScope&) = delete;

private:
    friend class CallRecorder;
    CallReport& report;
    bool bBusy = false; // a call fills it in
    ReportScope* pOuter;
};

} // namespace TARN_ZEF

#endif
