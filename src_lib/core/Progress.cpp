#include "core/Progress.h"

#include "core/cancel.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <span>
#include <string_view>
#include <thread>

namespace TARN_ZEF
{
namespace
{
constexpr const char* const UNUSED_NAME = "empty";
constexpr double DEFAULT_WEIGHT = 10.0;
// Notifications of a whole run.
constexpr u64 NUM_REPORTS = 200;

struct Child
{
    const char* tag;
    double weight;
};

constexpr Child RECONSTRUCT_CHILDREN[] = {
    {"CL_eres", 3}, {"SM_run", 3},   {"CL_creb", 3},  {"HL_st", 3},         {"VO_ftx", 3},
    {"VO_amb", 3},  {"TP_unif", 10}, {"TP_pps", 100}, {"TP_cbcpl", 100},    {"TP_itr", 50},
    {"TP_fin", 30}, {"RM_cpo", 10},  {"RM_kdeg", 10}, {"RM_gEfCandMT", 10}, {"efLoop", 10},
};
constexpr Child MELT_CHILDREN[] = {
    {"dih2e", 0.061},        {"reo", 0.013},         {"rFins", 0.002},        {"feate", 0.019},
    {"nfeate", 0.084},       {"ar4", 0.092},         {"oifc", 0.025},         {"mandiffe", 0.042},
    {"mandiffa", 0.943},     {"VO_ftx", 3},          {"VO_amb", 3},           {"TP_cbcpl", 6},
    {"TP_pps", 5},           {"RM_cpo", 1.09},       {"RM_kdeg", 4},          {"hal-part", 10},
    {"CL_eres", 3},          {"SM_run", 3},          {"CL_creb", 3},          {"HL_st", 3},
    {"TP_unif", 0.6},        {"TP_itr", 1},          {"TP_fin", 1.7},         {"efLoop", 5},
    {"RM_redborder", 0.263}, {"RM_redprioq", 0.824}, {"RM_redprocprioq", 15}, {"RM_gEfCandMT", 2},
};
constexpr Child TO_CLOUD_CHILDREN[] = {
    {"CL_eres", 3},   {"dih2e", 3}, {"reo", 3},   {"rFins", 3},     {"feate", 10},     {"nfeate", 50},
    {"hal-part", 10}, {"ar4", 100}, {"oifc", 10}, {"mandiffe", 10}, {"mandiffa", 100},
};
constexpr Child DENSITY_CHILDREN[] = {{"CL_eres", 3}, {"SM_run", 3}, {"CL_creb", 3}};
constexpr Child EDGE_FLIPS_CHILDREN[] = {{"RM_kdeg", 10}, {"RM_gEfCandMT", 10}, {"efLoop", 10}};
constexpr Child REDUCE_CHILDREN[] = {
    {"RM_kdeg", 3}, {"RM_redborder", 1}, {"RM_redprioq", 3}, {"RM_redprocprioq", 93}};
constexpr Child REMESH_CHILDREN[] = {{"remesh", 1}};
// About the time of each step.
constexpr Child FINISH_CHILDREN[] = {
    {"FI_part", 10}, {"FI_load", 4}, {"FI_even", 30}, {"FI_fit", 60}, {"FI_folds", 12}, {"FI_out", 8},
};
constexpr Child BODIES_CHILDREN[] = {{"BO_facing", 3}, {"BO_field", 6}, {"BO_surface", 1}};
constexpr Child READ_CHILDREN[] = {{"Read", 1}};
constexpr Child WRITE_CHILDREN[] = {{"Write", 1}};

struct Tree
{
    const char* rootName;
    std::span<const Child> children;
};
constexpr Tree TREES[] = {
    {"Reconstruct", RECONSTRUCT_CHILDREN},
    {"Melt", MELT_CHILDREN},
    {"ToCloud", TO_CLOUD_CHILDREN},
    {"Density Estimation", DENSITY_CHILDREN},
    {"EdgeFlips", EDGE_FLIPS_CHILDREN},
    {"Reduce", REDUCE_CHILDREN},
    {"Remesh", REMESH_CHILDREN},
    {"Finish", FINISH_CHILDREN},
    {"Bodies", BODIES_CHILDREN},
    {"Read", READ_CHILDREN},
    {"Write", WRITE_CHILDREN},
};

[[nodiscard]] Progress* startTree(const std::string& rootName)
{
    Progress* const pRoot = getRootProgress();
    pRoot->reset();
    pRoot->setName(rootName);
    return pRoot;
}

// The roots outlive everything: a thread may report while the process is already coming down.
struct Roots
{
    std::mutex mtx;
    std::map<std::thread::id, Progress*> mIdRoot;
};

[[nodiscard]] Roots& getRoots()
{
    static Roots* const pRoots = new Roots;
    return *pRoots;
}

// Made with a thread's root and destroyed with the thread, whose id the next thread may get.
struct ThreadEnd
{
    Progress* pRoot = nullptr;

    ThreadEnd() = default;
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd()
    {
        if (pRoot == nullptr)
            return;
        pRoot->unsubscribe();
        pRoot->reset();
    }
};

} // namespace

// No thread may go on calling a receiver that is gone.
ProgressBase::~ProgressBase()
{
    Roots& roots = getRoots();
    const std::lock_guard<std::mutex> lock(roots.mtx);
    for (const auto& [id, pRoot] : roots.mIdRoot)
        pRoot->unsubscribe(this);
}

void subscribe(ProgressBase* pProgress)
{
    if (pProgress != nullptr)
        getRootProgress()->subscribe(pProgress);
}

Progress::Progress(const std::string& name_, double weight_, Progress* pParent_)
    : name(name_)
    , weight(weight_)
    , pParent(pParent_)
{
}

void Progress::subscribe(ProgressBase* pProgress)
{
    ASSEX(pProgress != 0);
    pSubscriber = pProgress;
}

void Progress::unsubscribe()
{
    pSubscriber = nullptr;
}

void Progress::unsubscribe(ProgressBase* pProgress)
{
    ProgressBase* pExpected = pProgress;
    pSubscriber.compare_exchange_strong(pExpected, nullptr);
}

void Progress::createChild(const std::string& childName, double childWeight)
{
    ASSEX_TEXT(getName() != UNUSED_NAME, "this->name!=\"empty\"");
    const std::lock_guard<std::recursive_mutex> lock(mtx);
    const auto q_it = mNameKids.lower_bound(childName);
    if (q_it != mNameKids.end() && q_it->first == childName)
        return;
    mNameKids.emplace_hint(q_it, childName, std::make_unique<Progress>(childName, childWeight, this));
}

Progress* Progress::getChildProgressSetTodo(const std::string& childName, u64 todo)
{
    const std::lock_guard<std::recursive_mutex> lock(mtx);
    if (numTodo == 0)
        numTodo = 1;
    auto q_it = mNameKids.find(childName);
    if (q_it == mNameKids.end())
    {
        createChild(childName, DEFAULT_WEIGHT);
        q_it = mNameKids.find(childName);
        ASSEX(q_it != mNameKids.end());
    }
    Progress* const pChild = q_it->second.get();
    if (pChild->numDone != 0)
    {
        const double fraction = pChild->getProgress();
        const u64 newTodo = todo + pChild->numDone;
        pChild->numDone = static_cast<u64>(static_cast<double>(newTodo) * fraction);
        pChild->setTodo(newTodo);
    }
    else
        pChild->setTodo(todo);
    return pChild;
}

void Progress::setName(const std::string& name_)
{
    const std::lock_guard<std::recursive_mutex> lock(mtx);
    name = name_;
}

std::string Progress::getName() const
{
    const std::lock_guard<std::recursive_mutex> lock(mtx);
    return name;
}

void Progress::reset()
{
    const std::lock_guard<std::recursive_mutex> lock(mtx);
    // Shows in a debugger, should somebody still hold the node.
    for (const auto& [tag, pChild] : mNameKids)
        pChild->setName("invalid");
    mNameKids.clear();
    name = UNUSED_NAME;
    numTodo = 1;
    numDone = 0;
    reportEvery = 1;
    sinceLast = 0;
    lastFraction = -1.0;
}

void Progress::setFinished(bool bNotify)
{
    {
        const std::lock_guard<std::recursive_mutex> lock(mtx);
        for (const auto& [tag, pChild] : mNameKids)
            pChild->setFinished(false);
        if (mNameKids.empty())
            numDone = numTodo;
    }
    if (bNotify)
        notify();
}

double Progress::getProgress()
{
    const std::lock_guard<std::recursive_mutex> lock(mtx);
    if (numTodo == 0)
        return 1.0;
    double sum = 0.0;
    double sumWeights = 0.0;
    for (const auto& [tag, pChild] : mNameKids)
    {
        sum += pChild->weight * pChild->getProgress();
        sumWeights += pChild->weight;
    }
    if (sumWeights > 0.0)
        return sum / sumWeights;
    return numDone >= numTodo ? 1.0 : static_cast<double>(numDone) / static_cast<double>(numTodo);
}

std::vector<std::string> Progress::getChildNames() const
{
    const std::lock_guard<std::recursive_mutex> lock(mtx);
    std::vector<std::string> vResult;
    vResult.reserve(mNameKids.size());
    for (const auto& [tag, pChild] : mNameKids)
        vResult.push_back(tag);
    return vResult;
}

void Progress::setTodo(u64 n)
{
    const std::lock_guard<std::recursive_mutex> lock(mtx);
    numTodo = n;
    if (numDone == 0)
        reportEvery = computeReportEvery(n);
    reportEvery = std::max<u64>(reportEvery, 1);
}

// The fewer steps a node has and the less it weighs, the less often it is worth a report.
u64 Progress::computeReportEvery(u64 n) const
{
    if (pParent == nullptr || !(weight > 0.0))
        return n / NUM_REPORTS;
    double sumWeights = 0.0;
    for (const auto& [tag, pSibling] : pParent->mNameKids)
        sumWeights += pSibling->weight;
    if (!(sumWeights > 0.0))
        return reportEvery;
    const double steps =
        std::ceil(static_cast<double>(n) / static_cast<double>(NUM_REPORTS) * (sumWeights / weight));
    if (steps > static_cast<double>(n))
        return static_cast<u64>(std::ceil(static_cast<double>(n) * 0.75));
    return static_cast<u64>(steps);
}

void Progress::report()
{
    {
        const std::lock_guard<std::recursive_mutex> lock(mtx);
        sinceLast = 0;
    }
    notify();
}

void Progress::notify()
{
    // Up without a lock: locks are taken from the root downwards only.
    if (pParent != nullptr)
    {
        pParent->notify();
        return;
    }
    checkCancelled();
    std::string rootName;
    double fraction = 0.0;
    {
        const std::lock_guard<std::recursive_mutex> lock(mtx);
        fraction = getProgress();
        if (fraction == lastFraction)
            return;
        lastFraction = fraction;
        rootName = name;
    }
    if (ProgressBase* const pReceiver = pSubscriber)
        pReceiver->update(rootName, fraction);
}

Progress* getRootProgress()
{
    thread_local ThreadEnd threadEnd;
    Roots& roots = getRoots();
    const std::lock_guard<std::mutex> lock(roots.mtx);
    auto q_it = roots.mIdRoot.find(std::this_thread::get_id());
    if (q_it == roots.mIdRoot.end())
    {
        auto pNew = std::make_unique<Progress>(UNUSED_NAME, 1.0, nullptr);
        q_it = roots.mIdRoot.emplace(std::this_thread::get_id(), pNew.get()).first;
        static_cast<void>(pNew.release());
    }
    threadEnd.pRoot = q_it->second;
    return q_it->second;
}

bool ownsProgress()
{
    return getRootProgress()->getName() == UNUSED_NAME;
}

void prepareProgress(const std::string& rootName)
{
    const auto q_it = std::find_if(std::begin(TREES), std::end(TREES),
                                   [&](const Tree& tree) { return rootName == tree.rootName; });
    ASSEX(q_it != std::end(TREES));
    Progress* const pRoot = startTree(rootName);
    for (const Child& child : q_it->children)
        pRoot->createChild(child.tag, child.weight);
}

void prepareProgressSimA(const std::vector<double>& vTemperatures)
{
    Progress* const pRoot = startTree("EdgeFlipsS");
    pRoot->createChild("RM_kdeg", 10.0);
    for (const double temperature : vTemperatures)
        pRoot->createChild(flipCandidatesTag(temperature), 10.0);
    pRoot->createChild("RM_gEfCandMT", 10.0);
    pRoot->createChild("efLoop", 3.0);
}

void prepareProgressSmoothing(int numIterations)
{
    Progress* const pRoot = startTree("Smoothing");
    pRoot->createChild("border", 1.0);
    pRoot->createChild("list", 2.0);
    for (int i = 0; i < numIterations; ++i)
        pRoot->createChild(smoothingTag(i), 10.0);
    pRoot->createChild("RM_kdeg", 10.0);
}

void finishProgress()
{
    Progress* const pRoot = getRootProgress();
    pRoot->setFinished(true);
    pRoot->reset();
}

std::string flipCandidatesTag(double temperature)
{
    std::string tag = "RM_gEfCandMT";
    if (!(temperature > 0.0))
        return tag;
    // The form of a stream without settings: six significant digits.
    std::array<char, 32> text = {};
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), temperature, std::chars_format::general, 6);
    return tag.append(1, '_').append(text.data(), result.ptr);
}

std::string smoothingTag(int iteration)
{
    return "it%" + std::to_string(iteration);
}

} // namespace TARN_ZEF
