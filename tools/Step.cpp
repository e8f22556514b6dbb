#include "Step.h"

#include "numberText.h"

namespace TARN_TOOL
{
namespace
{
constexpr double MAX_ANGLE = 180.0;
}

std::optional<Step> Step::parseReduce(const std::string& text)
{
    const std::size_t comma = text.find(',');
    std::string lengthText = text.substr(0, comma);
    Step step;
    step.kind = Kind::REDUCE;
    step.bCells = !lengthText.empty() && lengthText.back() == 'c';
    if (step.bCells)
        lengthText.pop_back();
    const std::optional<double> givenLength = parseNumber(lengthText);
    const std::optional<double> givenAngle =
        comma == std::string::npos ? DEFAULT_ANGLE : parseNumber(text.substr(comma + 1));
    if (!givenLength || *givenLength <= 0.0 || !givenAngle || *givenAngle < 0.0 || *givenAngle > MAX_ANGLE)
        return std::nullopt;
    step.length = *givenLength;
    step.angle = *givenAngle;
    return step;
}

std::string Step::getText() const
{
    switch (kind)
    {
    case Kind::FLIPS:
        return "flips";
    case Kind::ANNEAL:
        return "anneal";
    case Kind::REDUCE:
        return "reduce " + textOf(length) + (bCells ? "c," : ",") + textOf(angle);
    case Kind::LAPLACE:
        return "laplace " + std::to_string(numIterations);
    }
    return "";
}

void Step::apply(const std::shared_ptr<TARN_ZEF::Mesh>& pMesh, double spacing) const
{
    switch (kind)
    {
    case Kind::FLIPS:
        TARN_ZEF::edgeFlips(pMesh);
        break;
    case Kind::ANNEAL:
        TARN_ZEF::edgeFlipsSimA(pMesh);
        break;
    case Kind::REDUCE:
        TARN_ZEF::reduce(pMesh, bCells ? length * spacing : length, angle, true);
        break;
    case Kind::LAPLACE:
        TARN_ZEF::laplacianSmoothing(pMesh, numIterations);
        break;
    }
}

} // namespace TARN_TOOL
