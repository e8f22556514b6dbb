#include "closing/Fairing.h"

#include "core/cancel.h"

namespace TARN_ZEF
{
namespace
{
constexpr int MOST_STEPS = 2000;
constexpr double SMALL = 1e-12; // of the squared pull at the start

double product(const std::vector<Vector3>& a, const std::vector<Vector3>& b)
{
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += a[i] * b[i];
    return sum;
}

// a += factor * b
void addTimes(std::vector<Vector3>& a, double factor, const std::vector<Vector3>& b)
{
    for (std::size_t i = 0; i < a.size(); ++i)
        a[i].add(b[i] * factor);
}
} // namespace

std::size_t Fairing::add(const Vector3& place, bool bFree, bool bCounts)
{
    vPlaces.push_back(place);
    vIsFree.push_back(bFree ? 1 : 0);
    vCounts.push_back(bCounts ? 1 : 0);
    vLinks.emplace_back();
    return vPlaces.size() - 1;
}

Fairing::Field Fairing::getUmbrellas(const Field& field) const
{
    Field umbrellas(field.size());
    for (std::size_t i = 0; i < field.size(); ++i)
    {
        if (vCounts[i] == 0 || vLinks[i].empty())
            continue;
        Vector3 sum;
        for (const std::size_t k : vLinks[i])
            sum.add(field[k]);
        umbrellas[i] = sum * (1.0 / static_cast<double>(vLinks[i].size()));
        umbrellas[i].sub(field[i]);
    }
    return umbrellas;
}

Fairing::Field Fairing::getPull(const Field& umbrellas) const
{
    Field pull(umbrellas.size());
    for (std::size_t i = 0; i < umbrellas.size(); ++i)
    {
        if (vCounts[i] == 0 || vLinks[i].empty())
            continue;
        pull[i].sub(umbrellas[i]);
        const Vector3 part = umbrellas[i] * (1.0 / static_cast<double>(vLinks[i].size()));
        for (const std::size_t k : vLinks[i])
            pull[k].add(part);
    }
    for (std::size_t i = 0; i < pull.size(); ++i)
        if (vIsFree[i] == 0)
            pull[i] = Vector3();
    return pull;
}

// M. R. Hestenes and E. Stiefel, Methods of conjugate gradients for solving linear systems, 1952.
void Fairing::run()
{
    Field rest = getPull(getUmbrellas(vPlaces));
    for (Vector3& v : rest)
        v.mul(-1.0);
    Field way = rest;
    double sqRest = product(rest, rest);
    const double goal = SMALL * sqRest;
    for (int step = 0; step < MOST_STEPS && sqRest > goal; ++step)
    {
        checkCancelled();
        const Field bend = getPull(getUmbrellas(way));
        const double curve = product(way, bend);
        if (!(curve > 0.0))
            return;
        addTimes(vPlaces, sqRest / curve, way);
        addTimes(rest, -sqRest / curve, bend);
        const double sqNext = product(rest, rest);
        for (std::size_t i = 0; i < way.size(); ++i)
            way[i] = rest[i] + way[i] * (sqNext / sqRest);
        sqRest = sqNext;
    }
}

} // namespace TARN_ZEF
