#ifndef ZEF_SHEETSEALER_H
#define ZEF_SHEETSEALER_H

#include "remesh/FlatSoup.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
struct BorderLoop;

// Closes the borders of oriented sheets: as fillHoles() does where a fill meets nothing, else by triangles round a point in
// the middle, whatever these meet.
class SheetSealer
{
public:
    explicit SheetSealer(FlatSoup& soup_)
        : soup(soup_)
    {
    }

    void run();

    // Borders closed.
    [[nodiscard]] int getNumSealed() const { return numSealed; }

private:
    void joinPinches();
    [[nodiscard]] std::vector<BorderLoop> findLoops() const;
    void fill(const std::vector<BorderLoop>& vLoops, bool bSmooth);
    void closeRound(const BorderLoop& loop);

    FlatSoup& soup;
    int numSealed = 0;
};

} // namespace TARN_ZEF

#endif
