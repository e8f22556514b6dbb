#include "Step.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "ToolError.h"
#include "numberText.h"

namespace TARN_TOOL
{
namespace
{
constexpr double MAX_ANGLE = 180.0;

// A length such as "0.5" or "2c" into the step; false if text is none.
bool parseLength(std::string text, Step& step)
{
    step.bCells = !text.empty() && text.back() == 'c';
    if (step.bCells)
        text.pop_back();
    const std::optional<double> given = parseNumber(text);
    step.length = given.value_or(0.0);
    return step.length > 0.0;
}

// Whole numbers from 1 with commas between; empty if text is no such.
std::vector<std::size_t> parseNumbers(const std::string& text)
{
    std::vector<std::size_t> vNumbers;
    const char* p = text.data();
    const char* const pEnd = p + text.size();
    while (true)
    {
        std::size_t number = 0;
        const auto [pStop, error] = std::from_chars(p, pEnd, number);
        if (error != std::errc() || number == 0 || (pStop != pEnd && *pStop != ','))
            return {};
        vNumbers.push_back(number);
        if (pStop == pEnd)
            return vNumbers;
        p = pStop + 1;
    }
}

std::string numbersText(const std::vector<std::size_t>& vNumbers)
{
    std::string text;
    for (const std::size_t number : vNumbers)
        text += (text.empty() ? "" : ",") + std::to_string(number);
    return text;
}

} // namespace

std::optional<Step> Step::parseReduce(const std::string& text)
{
    const std::size_t comma = text.find(',');
    Step step;
    step.kind = Kind::REDUCE;
    const bool bLength = parseLength(text.substr(0, comma), step);
    const std::optional<double> givenAngle =
        comma == std::string::npos ? DEFAULT_ANGLE : parseNumber(text.substr(comma + 1));
    if (!bLength || !givenAngle || *givenAngle < 0.0 || *givenAngle > MAX_ANGLE)
        return std::nullopt;
    step.angle = *givenAngle;
    return step;
}

std::optional<Step> Step::parseFill(const std::string& text)
{
    Step step;
    step.kind = Kind::FILL;
    step.vLoops = parseNumbers(text);
    if (!step.vLoops.empty())
        step.holes = Holes::NUMBERED;
    else if (text == "all-but-rim" || text == "all")
        step.holes = text == "all" ? Holes::ALL : Holes::ALL_BUT_RIM;
    else if (parseLength(text, step))
        step.holes = Holes::UP_TO_LENGTH;
    else
        return std::nullopt;
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
    case Kind::FILL:
        return "fill " + (holes == Holes::NUMBERED       ? numbersText(vLoops)
                          : holes == Holes::UP_TO_LENGTH ? textOf(length) + (bCells ? "c" : "")
                          : holes == Holes::ALL_BUT_RIM  ? "all-but-rim"
                                                         : "all");
    }
    return "";
}

std::string Step::apply(std::shared_ptr<TARN_ZEF::Mesh>& pMesh, double spacing) const
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
    case Kind::FILL:
        return fill(pMesh, spacing);
    }
    return "";
}

std::string Step::fill(std::shared_ptr<TARN_ZEF::Mesh>& pMesh, double spacing) const
{
    const std::vector<TARN_ZEF::BorderLoop> vChosen = chooseLoops(TARN_ZEF::findBorderLoops(*pMesh), spacing);
    std::vector<TARN_ZEF::FillResult> vResults;
    pMesh = TARN_ZEF::fillHoles(*pMesh, vChosen, TARN_ZEF::FillOptions(), &vResults);
    const auto numFilled = std::count_if(vResults.begin(), vResults.end(),
                                         [](const TARN_ZEF::FillResult& r) { return r.bFilled; });
    std::string text = std::to_string(numFilled) + " of " + std::to_string(vChosen.size()) + " holes filled";
    for (std::size_t i = 0; i < vResults.size(); ++i)
        if (!vResults[i].bFilled)
            text += "; one of length " + textOf(vChosen[i].length) + " stays open: " + vResults[i].reason;
    return text;
}

std::vector<TARN_ZEF::BorderLoop> Step::chooseLoops(const std::vector<TARN_ZEF::BorderLoop>& vAll,
                                                    double spacing) const
{
    std::vector<TARN_ZEF::BorderLoop> vChosen;
    for (const std::size_t number : vLoops)
    {
        if (number > vAll.size())
            throw ToolError("--" + getText() + ": there is no border " + std::to_string(number) + " of " +
                            std::to_string(vAll.size()) +
                            "; --holes lists them, and a length has a decimal point");
        vChosen.push_back(vAll[number - 1]);
    }
    if (holes == Holes::NUMBERED)
        return vChosen;
    const double longest = bCells ? length * spacing : length;
    std::copy_if(vAll.begin(), vAll.end(), std::back_inserter(vChosen),
                 [&](const TARN_ZEF::BorderLoop& loop) {
                     return holes == Holes::ALL ||
                            (!loop.bRim && (holes == Holes::ALL_BUT_RIM || loop.length <= longest));
                 });
    return vChosen;
}

} // namespace TARN_TOOL
