#ifndef ZEF_TOOLS_POINTJOBS_H
#define ZEF_TOOLS_POINTJOBS_H

#include "Job.h"

namespace TARN_TOOL
{
// Prints the spacing of the points.
class SpacingJob : public Job
{
public:
    explicit SpacingJob(const JobContext& context_)
        : Job(context_)
    {
    }
    void run() override;
};

// Prints how much memory the mesh would take.
class ForecastJob : public Job
{
public:
    explicit ForecastJob(const JobContext& context_)
        : Job(context_)
    {
    }
    void run() override;
};

// Draws the points.
class DrawJob : public Job
{
public:
    explicit DrawJob(const JobContext& context_)
        : Job(context_)
    {
    }
    void run() override;
};

// Writes points on triangles.
class SampleJob : public Job
{
public:
    explicit SampleJob(const JobContext& context_)
        : Job(context_)
    {
    }
    void run() override;

private:
    [[nodiscard]] std::vector<TARN_ZEF::Point3> sample(std::vector<TARN_ZEF::Point3>& vTriCorners);
};

// Writes points or triangles in another format.
class ConvertJob : public Job
{
public:
    explicit ConvertJob(const JobContext& context_)
        : Job(context_)
    {
    }
    void run() override;

private:
    // Formats of points or of triangles alone decide; else what the input holds.
    [[nodiscard]] bool wantsTriangles();
};

} // namespace TARN_TOOL

#endif
