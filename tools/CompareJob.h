#ifndef ZEF_TOOLS_COMPAREJOB_H
#define ZEF_TOOLS_COMPAREJOB_H

#include "Job.h"
#include "Targets.h"

namespace TARN_TOOL
{
// Tells how far two surfaces are apart, and draws the first one in the colors of its distances.
class CompareJob : public Job
{
public:
    explicit CompareJob(const JobContext& context_)
        : Job(context_)
    {
    }
    void run() override;

private:
    struct Surface
    {
        std::string name;
        std::vector<TARN_ZEF::Point3> vPoints;
        std::vector<int> vCorners;
    };

    [[nodiscard]] Surface readSurface(const std::string& name);
    void tell(const Surface& first, const Surface& second, const TARN_ZEF::MeshComparison& found,
              const PictureFigures& pictures) const;
};

} // namespace TARN_TOOL

#endif
