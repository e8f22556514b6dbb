#include "PictureFigures.h"

#include "numberText.h"

namespace TARN_TOOL
{
std::string PictureFigures::getText() const
{
    std::string text;
    if (legend)
        text += std::string("colors: ") + legend->name + " from blue at " + textOf(legend->low) +
                " to red at " + textOf(legend->high) + "\n";
    if (barLength > 0.0)
        text += "scale bar: " + textOf(barLength) + "\n";
    return text;
}

void PictureFigures::addTo(JsonLine& line) const
{
    if (legend)
    {
        JsonLine colors;
        colors.add("of", legend->name);
        colors.add("blue", legend->low);
        colors.add("red", legend->high);
        line.add("colors", colors);
    }
    if (barLength > 0.0)
        line.add("scaleBar", barLength);
}

} // namespace TARN_TOOL
