#ifndef ZEF_TOOLS_REPORT_H
#define ZEF_TOOLS_REPORT_H

#include "JsonLine.h"
#include "MeshStatistics.h"
#include "Options.h"
#include "PictureFigures.h"
#include "TriangleAngles.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace TARN_TOOL
{
// The version of the members that lines of JSON have; docs/usage.md lists them. It grows when one of them goes or gets
// another meaning, not when one is added.
constexpr std::size_t JSON_SCHEMA = 1;

// A line with what each begins with.
[[nodiscard]] JsonLine startJson(const Options& options);

// The figures of one run, and their two forms: a summary for people, one line of JSON for programs.
struct Report
{
    struct StepResult
    {
        std::string text;
        std::string remark;    // of the step itself; may be empty
        TriangleAngles angles; // of the mesh after the step
        double seconds = 0.0;
    };

    std::size_t numPoints = 0;         // read, or sampled from triangles
    std::size_t numInputTriangles = 0; // of a triangle soup
    double spacing = -1.0;             // in force; the detected one if only that is asked for
    double featureAngle = -1.0;        // of a remeshed soup, in force
    TriangleAngles anglesBefore;       // before the first step; not filled in without steps
    std::vector<StepResult> vSteps;
    MeshStatistics statistics;                                // of the mesh as it was written
    std::optional<TARN_ZEF::MeshCheck> check;                 // of that mesh, if asked for
    std::optional<std::vector<TARN_ZEF::BorderLoop>> borders; // of that mesh, if asked for
    std::vector<TARN_ZEF::CallReport> vCalls;                 // if they are asked for
    PictureFigures pictures;
    std::optional<TARN_ZEF::AutoReport> choice; // of factor and smoothing, if left to the library
    double readSeconds = 0.0;
    double computeSeconds = 0.0; // in the library: reconstruction, melting or sampling, and all steps
    double finishSeconds = 0.0;  // of these, the last stage of a reconstruction
    double writeSeconds = 0.0;
    double peakMegabytes = 0.0;
    std::size_t forecastBytes = 0;

    // Both end with a line end.
    [[nodiscard]] std::string getJson(const Options& options) const;
    [[nodiscard]] std::string getSummary(const Options& options) const;
    // The detected spacing alone, in the form that the options ask for.
    [[nodiscard]] std::string getSpacing(const Options& options) const;
    // The memory that the mesh would take, alone, as well.
    [[nodiscard]] std::string getForecast(const Options& options) const;

private:
    void addMesh(JsonLine& line) const;
    void addSteps(JsonLine& line) const;
    [[nodiscard]] std::string getPicturesText(const Options& options) const;
    [[nodiscard]] std::string getResultText(const Options& options) const;
    [[nodiscard]] std::string getTimesText(const Options& options) const;
    [[nodiscard]] std::string getSteps() const;
    [[nodiscard]] std::string getMeshLine() const;
    [[nodiscard]] std::string getSpacingText(const Options& options) const;
    [[nodiscard]] std::string getAngleRemark(const Options& options) const;
};

} // namespace TARN_TOOL

#endif
