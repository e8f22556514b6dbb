#ifndef ZEF_TOOLS_JOB_H
#define ZEF_TOOLS_JOB_H

#include "LibraryMessages.h"
#include "Options.h"
#include "ProgressBar.h"
#include "Report.h"
#include "SafeOutputFile.h"
#include "zef.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace TARN_TOOL
{
// One run of the tool: read, reconstruct, improve, write, draw, report. Output files appear only when everything has
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

    // Whether the mesh, judged as asked for, has faults. It was written all the same.
    [[nodiscard]] bool hasFoundFaults() const { return report.check && !report.check->isSound(); }

    // What the library said in its last call, if it was held back.
    [[nodiscard]] const std::string& getHeldMessages() const { return heldMessages; }

private:
    // Calls the library with its messages where the options want them.
    template <typename F>
    auto library(F call);

    void openTargets();
    void readInput();
    void readPoints(std::string& name);
    void readTriangles(const std::string& name);
    void checkInput() const;
    void checkSpacing(double extent) const;

    void forecastMemory();
    void makeMesh();
    void reconstruct();
    std::shared_ptr<TARN_ZEF::Mesh> reconstructAsAsked();
    void finish();
    void melt();
    void remesh();
    void noteRemesh(const TARN_ZEF::RemeshReport& found);
    void sampleTriangles();
    void improveMesh();
    void takeMesh();
    void checkResult();
    void writeResult();
    void drawPictures();

    // The spacing in force. The first call in automatic mode takes in the points once more.
    double getSpacing();
    double estimateSpacing();
    void noteLostDigits();
    void print(const std::string& text) const;
    void commitTargets();
    void note(const std::string& text);

    const Options& options;
    ProgressBar progressBar;
    std::string heldMessages;

    std::optional<SafeOutputFile> outFile;
    std::optional<SafeOutputFile> pngFile;
    std::optional<SafeOutputFile> pngCloudFile;

    // Finite ones only: the points, or three for each triangle, or the sample points of the triangles.
    std::vector<TARN_ZEF::Point3> vPoints;
    std::shared_ptr<TARN_ZEF::Mesh> pMesh;
    std::vector<TARN_ZEF::Point3*> vVertices; // of pMesh
    std::vector<int> vCorners; // three consecutive entries, indices into vVertices, are one triangle
    Report report;
};

} // namespace TARN_TOOL

#endif
