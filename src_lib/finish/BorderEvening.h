#ifndef ZEF_FINISH_BORDEREVENING_H
#define ZEF_FINISH_BORDEREVENING_H

#include "surface/HalfEdgeMesh.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// Takes the teeth off borders: cells leave a border in zigzag where the rim of the points is straight. A notch gets a
// triangle, a single triangle that sticks out goes, wherever the border turns less on the whole afterwards. What
// turns once, such as the corner of a window, turns as much with a piece cut off, and stays; so does an arc. Afterwards
// the border can be smoothed.
//
// The measure of a turn is the sine of half its angle: it grows slower than the angle, so that a turn spread over two
// vertices never counts less than one.
//
// Ownership:  works on the caller's mesh. Features and fixed vertices are left alone.
// Invariant:  the mesh stays manifold; no triangle is added that bends away from its neighbours, is thin, or shares
//             an edge with others than these.
// Threads:    that of the call.
class BorderEvening
{
public:
    explicit BorderEvening(HalfEdgeMesh& mesh_);

    // Takes the teeth off: rounds until nothing changes any more, or enough.
    void trim();
    // Moves border vertices towards a smooth line, but those at corners.
    void smooth();
    [[nodiscard]] std::size_t getNumFilled() const noexcept { return numFilled; }
    [[nodiscard]] std::size_t getNumDropped() const noexcept { return numDropped; }

private:
    // A vertex on a border.
    struct Bend
    {
        int in;  // the border half-edge into it
        int out; // and out of it
    };
    struct Candidate
    {
        double gain;
        int v;
        bool bFill;
    };

    [[nodiscard]] Bend getBend(int v) const;
    [[nodiscard]] double getGain(const Bend& bend) const;
    [[nodiscard]] bool mayFill(const Bend& bend) const;
    [[nodiscard]] bool mayDrop(const Bend& bend) const;
    [[nodiscard]] std::vector<Candidate> findCandidates() const;
    [[nodiscard]] bool change(const Candidate& candidate);
    void fill(const Bend& bend);
    void move(double step);
    [[nodiscard]] bool isHarmless(int v, const Point3& target) const;

    HalfEdgeMesh& mesh;
    std::size_t numFilled = 0;
    std::size_t numDropped = 0;
};

} // namespace TARN_ZEF

#endif
