#ifndef ZEF_TOOLS_INPUTCHECKS_H
#define ZEF_TOOLS_INPUTCHECKS_H

#include "Options.h"
#include "zef.h"

#include <vector>

namespace TARN_TOOL
{
// What can be told of an input before anything is computed. Errors: ToolError with the way out.

// Points, or corners of triangles, that are there and not too many, with an extent that is a number.
void requireUsable(const Options& options, const std::vector<TARN_ZEF::Point3>& vPoints);

// Beyond that, for a surface: three of them, and an extent.
void requireExtent(const Options& options, const std::vector<TARN_ZEF::Point3>& vPoints);

// A given spacing that the lattice can resolve.
void requireSpacing(const Options& options, const std::vector<TARN_ZEF::Point3>& vPoints);
// And that the triangles do not cross too many cells of. Three entries are one triangle.
void requireCells(const Options& options, const std::vector<TARN_ZEF::Point3>& vTriCorners);

// Three for each triangle with finite corners.
[[nodiscard]] std::vector<TARN_ZEF::Point3> getFiniteCorners(const TARN_ZEF::TriangleData& data);

[[nodiscard]] bool isEmpty(const std::shared_ptr<TARN_ZEF::Mesh>& pMesh);

} // namespace TARN_TOOL

#endif
