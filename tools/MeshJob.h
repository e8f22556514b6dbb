#ifndef ZEF_TOOLS_MESHJOB_H
#define ZEF_TOOLS_MESHJOB_H

#include "Job.h"
#include "Targets.h"

#include <memory>
#include <vector>

namespace TARN_TOOL
{
// Makes a mesh or reads one, improves it in steps, judges, writes and draws it, and tells the figures.
class MeshJob : public Job
{
public:
    explicit MeshJob(const JobContext& context_);

    void run() override;
    [[nodiscard]] bool hasFoundFaults() const override { return report.check && !report.check->isSound(); }

private:
    void improve();
    void apply(const Step& step, double cell);
    void takeStatistics();
    void judge();
    void write(Targets& targets);
    void tell();

    std::unique_ptr<MeshSource> pSource;
    std::shared_ptr<TARN_ZEF::Mesh> pMesh;
    Report report;
};

} // namespace TARN_TOOL

#endif
