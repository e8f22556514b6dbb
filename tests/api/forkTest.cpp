// The child of a process that has used the library can use it too, and ends.
#include "zef.h"

#include "helpers/PipelineMesh.h"
#include "helpers/meshHash.h"
#include "parallel/WorkerPool.h"

#include <gtest/gtest.h>

#if defined(__unix__) || defined(__APPLE__)

#include <sys/wait.h>
#include <unistd.h>

namespace TARN_ZEF
{
namespace
{
constexpr unsigned int TIMEOUT_SECONDS = 120; // a child that hangs dies of it

std::uint64_t reconstructOnTwoThreads()
{
    setNumThreads(2);
    std::vector<Point3> cloud = makeCloud(20000, 0.0, 0.0);
    return getHash(reconstruct_auto(cloud, false, 1.2));
}

// Each child begets the next, and ends well if its own call and that child do.
bool isSameInChildren(std::uint64_t hash, int numGenerations)
{
    if (numGenerations == 0)
        return true;
    const pid_t child = fork();
    if (child == 0)
    {
        alarm(TIMEOUT_SECONDS);
        const bool bSame = reconstructOnTwoThreads() == hash && getWorkerPool().size() == 2;
        _exit(bSame && isSameInChildren(hash, numGenerations - 1) ? 0 : 1);
    }
    int status = -1;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

TEST(Fork, childrenOfAHostHaveWorkersOfTheirOwn)
{
    const int numBefore = getNumThreads();
    const std::uint64_t hash = reconstructOnTwoThreads();
    EXPECT_TRUE(isSameInChildren(hash, 2));
    EXPECT_EQ(reconstructOnTwoThreads(), hash);
    setNumThreads(numBefore);
}

// The destructors of the process do not wait for threads that only the parent has.
TEST(Fork, aChildThatNeverCalledCanExit)
{
    const int numBefore = getNumThreads();
    static_cast<void>(reconstructOnTwoThreads());
    EXPECT_EXIT(
        {
            alarm(TIMEOUT_SECONDS);
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
    setNumThreads(numBefore);
}

} // namespace
} // namespace TARN_ZEF

#endif
