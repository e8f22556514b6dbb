#ifndef ZEF_CHAINSAMPLER_H
#define ZEF_CHAINSAMPLER_H

#include "remesh/SourceSurface.h"
#include "tarn_locate3/RTree.h"

#include <vector>

namespace TARN_ZEF
{
// A vertex of the result on a chain: on the piece from vertex number `segment` of the chain to the next one.
struct ChainSample
{
    int segment = 0;
    double along = 0.0; // 0 to 1
    Point3 point;
    double size = 0.0; // wanted edge length there
};

// Cuts the chains of a surface into even pieces, in one dimension: about as long as asked, shorter where another
// chain of the same patch or the next corner is nearer than that, and shorter too until no old vertex of
// the chain lies farther than a chord error from its new course.
class ChainSampler
{
public:
    // length      of a piece, wanted
    // chordError  0.6 of the tolerance is usual
    // bGraded     whether near features shorten the pieces
    ChainSampler(const SourceSurface& source_, double length_, double chordError_, bool bGraded_);

    void run();

    // For each chain its inner samples in order, without the ends.
    [[nodiscard]] const std::vector<std::vector<ChainSample>>& getSamples() const { return vSamples; }
    // Wanted edge length at a corner of the source; only for vertices at the ends of chains.
    [[nodiscard]] double sizeAt(int vertex) const { return vCornerSize[vertex]; }

private:
    // A place on a chain where the size is measured.
    struct Node
    {
        int segment;
        double along;
        double arc; // from the beginning of the chain
        double size;
    };
    struct Segment
    {
        int chain;
        int idx;
        double arc;
    };

    void fillNodes(int chain);
    [[nodiscard]] std::vector<double> sizesByBend(int chain) const;
    void fillTree();
    void measureRoom(int chain);
    [[nodiscard]] double roomAt(int chain, const Node& node) const;
    [[nodiscard]] double roomWithin(double distance, int chain, const Node& node, const Point3& p) const;
    [[nodiscard]] bool mayCrowd(int chain, int otherChain) const;
    void smoothSizes();
    void sample(int chain);
    [[nodiscard]] std::vector<ChainSample> place(int chain, int numPieces) const;
    [[nodiscard]] std::vector<ChainSample> placeOnAll(int chain) const;
    [[nodiscard]] bool followsChain(int chain, const std::vector<ChainSample>& vPlaced) const;
    [[nodiscard]] const Point3& pointOf(int chain, int idx) const;
    // Chains of bodies that touch along them are cut alike, to the last bit.
    void shareSamples();
    [[nodiscard]] std::vector<std::vector<int>> findCourses() const;
    [[nodiscard]] std::vector<ChainSample> turnedOver(int chain,
                                                      const std::vector<ChainSample>& vOther) const;

    const SourceSurface& source;
    double length;
    double chordError;
    bool bGraded;
    std::vector<std::vector<Node>> vNodes;
    std::vector<std::vector<ChainSample>> vSamples;
    std::vector<double> vCornerSize;
    std::vector<Segment> vSegments;
    TARN_LOCATE3::RTree tree;
};

} // namespace TARN_ZEF

#endif
