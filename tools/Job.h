#ifndef ZEF_TOOLS_JOB_H
#define ZEF_TOOLS_JOB_H

#include "MeshStatistics.h"
#include "Options.h"
#include "OutputCapture.h"
#include "ProgressBar.h"
#include "SafeOutputFile.h"
#include "zef.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace TARN_TOOL
{
// One run of the tool: read, reconstruct, write, draw, report. Output files appear only when everything has
// worked.
//
// Threads:    one job for each process; it turns the standard streams aside during library calls.
class Job
{
public:
    // Keeps a reference; options must outlive the job.
    explicit Job(const Options& options_);
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    // Throws ToolError with the reason if the job cannot be done.
    void run();

    // What the library said in its last call, if it was held back.
    [[nodiscard]] const std::string& getHeldMessages() const { return heldMessages; }

private:
    // Calls the library with its messages where the options want them.
    template <typename F>
    auto library(F call);

    void openTargets();
    void readCloud();
    void dropUnusablePoints();
    void checkCloud() const;
    void reconstruct();
    void writeMesh();
    void drawPictures();
    void estimateSpacing();
    void noteLostDigits();
    void commitTargets();

    void printSpacing() const;
    void printFigures() const;
    void printSummary() const;
    void note(const std::string& text);

    const Options& options;
    ProgressBar progressBar;
    std::string heldMessages;

    std::optional<SafeOutputFile> outFile;
    std::optional<SafeOutputFile> pngFile;
    std::optional<SafeOutputFile> pngCloudFile;

    std::vector<TARN_ZEF::Point3> vPoints; // finite ones only
    std::shared_ptr<TARN_ZEF::Mesh> pMesh;
    std::vector<TARN_ZEF::Point3*> vVertices; // of pMesh
    std::vector<int> vCorners; // three consecutive entries, indices into vVertices, are one triangle
    MeshStatistics statistics;

    double spacing = -1.0; // in force; the detected one if only that is asked for
    double readSeconds = 0.0;
    double computeSeconds = 0.0;
    double writeSeconds = 0.0;
    double peakMegabytes = 0.0;
};

} // namespace TARN_TOOL

#endif
